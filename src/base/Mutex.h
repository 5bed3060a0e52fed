// SPDX-License-Identifier: Apache-2.0
// std::mutex and std::condition_variable with the annotations that clang's thread-safety analysis needs.
#pragma once

#include <condition_variable>
#include <mutex>
#include <utility>

#include "base/ThreadAnnotations.h"

namespace base {

class CAPABILITY("mutex") Mutex {
 public:
  // For who must not wait; everybody else takes a MutexLock.
  bool TryLock() TRY_ACQUIRE(true) { return m_mutex.try_lock(); }
  void Unlock() RELEASE() { m_mutex.unlock(); }

 private:
  friend class MutexLock;
  std::mutex m_mutex;
};

// Holds the mutex until the end of the scope. Unlock and Lock interrupt that.
class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : m_lock(mutex.m_mutex) {}
  ~MutexLock() RELEASE() {}

  void Unlock() RELEASE() { m_lock.unlock(); }
  void Lock() ACQUIRE() { m_lock.lock(); }

 private:
  friend class Condition;
  std::unique_lock<std::mutex> m_lock;
};

// Waiting gives the lock up meanwhile. A predicate that reads guarded data says so: `[&]() REQUIRES(m_mutex) { ... }`.
class Condition {
 public:
  void NotifyAll() { m_condition.notify_all(); }
  // Until the predicate holds.
  template <class Predicate>
  void Wait(MutexLock& lock, Predicate predicate) {
    m_condition.wait(lock.m_lock, std::move(predicate));
  }
  // Until the predicate holds or the time has passed; answers whether it holds.
  template <class Duration, class Predicate>
  bool WaitFor(MutexLock& lock, Duration time, Predicate predicate) {
    return m_condition.wait_for(lock.m_lock, time, std::move(predicate));
  }
  // Until notified or the time has passed, or for no reason at all.
  template <class Duration>
  void WaitFor(MutexLock& lock, Duration time) {
    m_condition.wait_for(lock.m_lock, time);
  }

 private:
  std::condition_variable m_condition;
};

}  // namespace base
