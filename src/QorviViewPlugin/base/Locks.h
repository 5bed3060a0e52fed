// SPDX-License-Identifier: Apache-2.0
// The Boost mutexes with the annotations that clang's thread-safety analysis needs. The library uses these and not
// base/Mutex.h, because it declares Boost.Thread as a dependency and needs reader/writer locks too. Locking goes
// through the three scoped classes only, waiting through Condition.
#pragma once

#include <boost/thread/locks.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/shared_mutex.hpp>
#include <chrono>
#include <condition_variable>

#include "base/ThreadAnnotations.h"

namespace QorviViewPlugin {

class CAPABILITY("mutex") Mutex {
  friend class MutexLock;
  boost::mutex m_mutex;
};

class CAPABILITY("shared_mutex") SharedMutex {
  friend class ReadLock;
  friend class WriteLock;
  boost::shared_mutex m_mutex;
};

class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : m_lock(mutex.m_mutex) {}
  ~MutexLock() RELEASE() {}

 private:
  friend class Condition;
  boost::unique_lock<boost::mutex> m_lock;
};

class Condition {
 public:
  void NotifyAll() { m_condition.notify_all(); }
  // Gives the lock up until notified or the time has passed, or for no reason at all.
  void WaitFor(MutexLock& lock, std::chrono::milliseconds time) { m_condition.wait_for(lock.m_lock, time); }

 private:
  std::condition_variable_any m_condition;
};

class SCOPED_CAPABILITY ReadLock {
 public:
  explicit ReadLock(SharedMutex& mutex) ACQUIRE_SHARED(mutex) : m_lock(mutex.m_mutex) {}
  ~ReadLock() RELEASE_GENERIC() {}

 private:
  boost::shared_lock<boost::shared_mutex> m_lock;
};

class SCOPED_CAPABILITY WriteLock {
 public:
  explicit WriteLock(SharedMutex& mutex) ACQUIRE(mutex) : m_lock(mutex.m_mutex) {}
  ~WriteLock() RELEASE() {}

 private:
  boost::unique_lock<boost::shared_mutex> m_lock;
};

}  // namespace QorviViewPlugin
