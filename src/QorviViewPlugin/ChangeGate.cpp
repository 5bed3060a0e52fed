// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ChangeGate.h"

#include <utility>

namespace QorviViewPlugin {

void ChangeGate::Arrive(TakeChange take, const std::string& data) {
  {
    MutexLock lock(m_lock);
    if (IsClosed()) m_drained.WaitFor(lock, kPatience);
    if (IsClosed()) {
      m_waiting.push_back({take, data});
      return;
    }
  }
  take(data);
}

void ChangeGate::BeginLoad() {
  MutexLock lock(m_lock);
  ++m_loads;
}

void ChangeGate::EndLoad() {
  {
    MutexLock lock(m_lock);
    --m_loads;
    // An observer that a waiting change has called may load too: the loop that called it goes on.
    if (IsClosed()) return;
    m_isDraining = true;
  }
  Change change;
  while (TakeNext(change)) change.take(change.data);
}

bool ChangeGate::TakeNext(Change& change) {
  MutexLock lock(m_lock);
  if (m_waiting.empty() || m_loads > 0) {
    m_isDraining = false;
    m_drained.NotifyAll();
    return false;
  }
  change = std::move(m_waiting.front());
  m_waiting.pop_front();
  return true;
}

}  // namespace QorviViewPlugin
