// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "ResourceStore/Export.h"

namespace ResourceStore {

// Holds the one receiver of a kind of change. Any thread; m_mutex guards everything and is not held across calls.
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
  bool IsAnyRunning(Condition condition) const;
  bool IsInsideCall() const;
  bool RunsBefore(unsigned int generation) const;

  std::mutex m_mutex;
  std::condition_variable m_callEnded;
  std::shared_ptr<const Callback> m_callback;
  unsigned int m_generation = 0;  // counts the callbacks that were set
  RunningCall* m_running = nullptr;
};

}  // namespace ResourceStore
