// SPDX-License-Identifier: Apache-2.0
#include "BizShared/details/Canceller.h"

#include <algorithm>

#include "BizShared/CancellerImpl.h"

namespace BizShared::details {

CCanceller::CCanceller() : m_impl(std::make_unique<Impl>()) {}
CCanceller::~CCanceller() = default;

void CCanceller::Cancel() {
  std::lock_guard<std::mutex> lock(m_impl->m_mutex);
  m_impl->m_cancelled = true;
  m_impl->m_cancelledNow.notify_all();
  for (CURLM* transfer : m_impl->m_transfers) curl_multi_wakeup(transfer);
}

void CCanceller::Wake() {
  std::lock_guard<std::mutex> lock(m_impl->m_mutex);
  for (CURLM* transfer : m_impl->m_transfers) curl_multi_wakeup(transfer);
}

bool CCanceller::IsCancelled() const {
  std::lock_guard<std::mutex> lock(m_impl->m_mutex);
  return m_impl->m_cancelled;
}

bool CCanceller::Pause(std::chrono::milliseconds duration) {
  std::unique_lock<std::mutex> lock(m_impl->m_mutex);
  return !m_impl->m_cancelledNow.wait_for(lock, duration, [this] { return m_impl->m_cancelled; });
}

void CCanceller::Impl::Attach(CURLM* transfer) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_transfers.push_back(transfer);
}

void CCanceller::Impl::Detach(CURLM* transfer) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_transfers.erase(std::find(m_transfers.begin(), m_transfers.end(), transfer));
}

}  // namespace BizShared::details
