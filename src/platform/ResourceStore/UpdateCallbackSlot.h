// SPDX-License-Identifier: Apache-2.0
// For this library and the platform's tests, not for hosts.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "ResourceStore/Export.h"
#include "base/Mutex.h"

namespace ResourceStore {

// Holds the one receiver of a kind of change. Any thread; no lock is held across calls.
class RESOURCESTORE_API UpdateCallbackSlot {
 public:
  using Callback = std::function<void(const std::string&)>;

  // Replaces the callback (empty: none) and waits until no call of an earlier one runs any more, unless this thread is
  // inside one.
  void Set(Callback callback);
  // Calls the callback, if there is one. What it throws ends here.
  void Call(const std::string& data);

 private:
  // On the stack of the call itself: calling needs no memory, so that no change is lost for want of it.
  struct RunningCall {
    std::thread::id thread;
    unsigned int generation;
    RunningCall* next;
  };
  template <class Condition>
  bool IsAnyRunning(Condition condition) const REQUIRES(m_mutex);
  bool IsInsideCall() const REQUIRES(m_mutex);
  bool RunsBefore(unsigned int generation) const REQUIRES(m_mutex);

  base::Mutex m_mutex;
  base::Condition m_callEnded;
  std::shared_ptr<const Callback> m_callback GUARDED_BY(m_mutex);
  unsigned int m_generation GUARDED_BY(m_mutex) = 0;  // counts the callbacks that were set
  RunningCall* m_running GUARDED_BY(m_mutex) = nullptr;
};

}  // namespace ResourceStore
