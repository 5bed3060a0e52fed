// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/StatusBoard.h"

#include <utility>

namespace ResourceStore::details {

DownloadStatus StatusBoard::Get() const {
  base::MutexLock lock(m_mutex);
  return m_status;
}

void StatusBoard::SetCallback(Callback callback) {
  if (!callback) return m_slot.Set({});
  m_slot.Set([this, callback = std::move(callback)](const std::string&) { callback(Get()); });
}

void StatusBoard::Enter(DownloadState state) {
  m_status.state = state;
  m_status.since = std::chrono::system_clock::now();
}

void StatusBoard::Begin(DownloadState state) {
  base::MutexLock lock(m_mutex);
  m_status = {};
  Enter(state);
}

void StatusBoard::Become(DownloadState state) {
  {
    base::MutexLock lock(m_mutex);
    if (m_status.state == state) return;
    Enter(state);
  }
  Tell();
}

void StatusBoard::Fail(const Vant::Base::Error::ErrorCode& error, int systemError) {
  {
    base::MutexLock lock(m_mutex);
    if (m_status.state != DownloadState::Failing) Enter(DownloadState::Failing);
    m_status.error = error;
    m_status.systemError = systemError;
  }
  Tell();
}

}  // namespace ResourceStore::details
