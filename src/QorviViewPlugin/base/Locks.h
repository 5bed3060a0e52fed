// SPDX-License-Identifier: Apache-2.0
// Boost's mutex and the standard reader/writer lock with the annotations that clang's thread-safety analysis needs.
// Locking goes through the three scoped classes only, waiting through Condition.
#pragma once

#include <boost/thread/locks.hpp>
#include <boost/thread/mutex.hpp>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>

#include "base/ThreadAnnotations.h"

namespace QorviViewPlugin {

class CAPABILITY("mutex") Mutex {
  friend class MutexLock;
  boost::mutex m_mutex;
};

// Not Boost's, which is a mutex and three conditions: five times the memory, and a look-up under it cost four times one
// under this. Who waits to write goes before who comes to read afterwards: readers without end must not keep a change
// from the cache. glibc's lock does so only where it is asked to.
class CAPABILITY("shared_mutex") SharedMutex {
#ifdef PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP
 public:
  SharedMutex() {
    *static_cast<pthread_rwlock_t*>(m_mutex.native_handle()) = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;
  }

 private:
#endif
  friend class ReadLock;
  friend class WriteLock;
  std::shared_mutex m_mutex;
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
  std::shared_lock<std::shared_mutex> m_lock;
};

class SCOPED_CAPABILITY WriteLock {
 public:
  explicit WriteLock(SharedMutex& mutex) ACQUIRE(mutex) : m_lock(mutex.m_mutex) {}
  ~WriteLock() RELEASE() {}

 private:
  std::unique_lock<std::shared_mutex> m_lock;
};

}  // namespace QorviViewPlugin
