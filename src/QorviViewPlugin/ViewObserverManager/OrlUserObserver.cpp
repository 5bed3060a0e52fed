// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewObserverManager/OrlUserObserver.h"

namespace QorviViewPlugin {

void COrlUserObserver::OnUserListNotify(ResourceStore::CIOrlUserObserverParam& param) {
  MutexLock lock(m_lock);
  m_bWaiting = false;  // whatever comes of the rest, lest somebody wait for ever
  m_bSucceeded = false;
  const bool succeeded = param.GetVal_enumState() == ResourceStore::CIOrlUserObserverParam::Succeeded;
  m_error = succeeded ? Vant::Base::Error::ErrorCode() : param.GetVal_stru_error_code();
  m_bSucceeded = succeeded;
}

void COrlUserObserver::SetWaiting(bool waiting) {
  MutexLock lock(m_lock);
  m_bWaiting = waiting;
}

bool COrlUserObserver::IsWaiting() const {
  MutexLock lock(m_lock);
  return m_bWaiting;
}

bool COrlUserObserver::IsSucceeded() const {
  MutexLock lock(m_lock);
  return m_bSucceeded;
}

Vant::Base::Error::ErrorCode COrlUserObserver::GetErrorCode() const {
  MutexLock lock(m_lock);
  return m_error;
}

}  // namespace QorviViewPlugin
