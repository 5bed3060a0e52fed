// SPDX-License-Identifier: Apache-2.0
#include "BizShared/details/Process.h"

#include <atomic>

#include "base/system/System.h"

namespace BizShared::details {

namespace {

constexpr int kTransportError = 1;
constexpr int kOtherProcess = 1000;  // beyond curl's codes

std::atomic<int64_t> s_owner{0};

}  // namespace

bool ClaimProcess() {
  int64_t owner = 0;
  return s_owner.compare_exchange_strong(owner, base::ProcessId()) || owner == base::ProcessId();
}

bool IsForkedChild() {
  const int64_t owner = s_owner;
  return owner != 0 && base::HasLostThreadsOf(owner);
}

Vant::Base::Error::ErrorCode ForkedChildError() {
  return {kTransportError, kOtherProcess, 0, {}};
}

}  // namespace BizShared::details
