// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewObserverManager/OrlUserObserver.h"

namespace QorviViewPlugin {

void COrlUserObserver::OnUserListNotify(ResourceStore::CIOrlUserObserverParam& param) {
  MutexLock lock(m_lock);
  m_bWaiting = false;  // whatever comes of the rest, lest somebody wait for ever
  m_outcome.succeeded = false;
  const bool succeeded = param.GetVal_enumState() == ResourceStore::CIOrlUserObserverParam::Succeeded;
  m_outcome.error = succeeded ? Vant::Base::Error::ErrorCode() : param.GetVal_stru_error_code();
  m_outcome.succeeded = succeeded;
}

void COrlUserObserver::SetWaiting(bool waiting) {
  MutexLock lock(m_lock);
  m_bWaiting = waiting;
}

bool COrlUserObserver::IsWaiting() const {
  MutexLock lock(m_lock);
  return m_bWaiting;
}

COrlUserObserver::Outcome COrlUserObserver::GetOutcome() const {
  MutexLock lock(m_lock);
  return m_outcome;
}

}  // namespace QorviViewPlugin
