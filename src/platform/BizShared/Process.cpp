// SPDX-License-Identifier: Apache-2.0
#include "BizShared/details/Process.h"

#include <unistd.h>

#include <atomic>

namespace BizShared::details {

namespace {

constexpr int kTransportError = 1;
constexpr int kOtherProcess = 1000;  // beyond curl's codes

std::atomic<pid_t> s_owner{0};

}  // namespace

bool ClaimProcess() {
  pid_t owner = 0;
  return s_owner.compare_exchange_strong(owner, getpid()) || owner == getpid();
}

bool IsForkedChild() {
  const pid_t owner = s_owner;
  return owner != 0 && owner != getpid();
}

Vant::Base::Error::ErrorCode ForkedChildError() {
  return {kTransportError, kOtherProcess, 0, {}};
}

}  // namespace BizShared::details
