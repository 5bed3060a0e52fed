// SPDX-License-Identifier: Apache-2.0
#include "BizShared/details/Canceller.h"

#include <algorithm>

namespace BizShared::details {

void CCanceller::Cancel() {
  base::MutexLock lock(m_mutex);
  m_cancelled = true;
  m_cancelledNow.NotifyAll();
  WakeAll();
}

void CCanceller::Wake() {
  base::MutexLock lock(m_mutex);
  WakeAll();
}

bool CCanceller::IsCancelled() const {
  base::MutexLock lock(m_mutex);
  return m_cancelled;
}

bool CCanceller::Pause(std::chrono::milliseconds duration) {
  base::MutexLock lock(m_mutex);
  return !m_cancelledNow.WaitFor(lock, duration, [this]() REQUIRES(m_mutex) { return m_cancelled; });
}

void CCanceller::Attach(IWakeable& runner) {
  base::MutexLock lock(m_mutex);
  m_runners.push_back(&runner);
}

void CCanceller::Detach(IWakeable& runner) {
  base::MutexLock lock(m_mutex);
  m_runners.erase(std::find(m_runners.begin(), m_runners.end(), &runner));
}

void CCanceller::WakeAll() {
  for (IWakeable* runner : m_runners) runner->WakeUp();
}

}  // namespace BizShared::details
