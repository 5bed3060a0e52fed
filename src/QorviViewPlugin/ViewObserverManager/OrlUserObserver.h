// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QorviViewPlugin/base/Locks.h"
#include "ResourceStore/OrlUserManager.h"
#include "VantBase/Error.h"

namespace QorviViewPlugin {

// Lets a thread wait for the end of the platform's user-list download. Any thread; m_lock guards all members, so a
// waiter that sees IsWaiting() false reads the whole outcome.
class COrlUserObserver : public ResourceStore::IOrlUserObserver {
 public:
  virtual ~COrlUserObserver() = default;

  void OnUserListNotify(ResourceStore::CIOrlUserObserverParam& param) override EXCLUDES(m_lock);

  void SetWaiting(bool waiting) EXCLUDES(m_lock);
  bool IsWaiting() const EXCLUDES(m_lock);
  // The outcome of the last download that ended; the error is the default record when it succeeded.
  bool IsSucceeded() const EXCLUDES(m_lock) { return GetOutcome().succeeded; }
  Vant::Base::Error::ErrorCode GetErrorCode() const EXCLUDES(m_lock) { return GetOutcome().error; }
  // Both of the same download.
  struct Outcome {
    bool succeeded = false;
    Vant::Base::Error::ErrorCode error;
  };
  Outcome GetOutcome() const EXCLUDES(m_lock);

 private:
  mutable Mutex m_lock;  // leaf lock
  bool m_bWaiting GUARDED_BY(m_lock) = false;
  Outcome m_outcome GUARDED_BY(m_lock);
};

}  // namespace QorviViewPlugin
