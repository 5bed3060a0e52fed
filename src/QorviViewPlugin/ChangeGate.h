// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <deque>
#include <string>

#include "QorviViewPlugin/base/Locks.h"

namespace QorviViewPlugin {

// Takes a change document into the cache.
using TakeChange = void (*)(const std::string& data) noexcept;

// Lets change documents through, except while a load is filling the cache. A document that arrives during a load is
// queued, after a short wait (Arrive). The loading thread applies the queue in order when the load ends. Any thread;
// m_lock is a leaf lock.
class ChangeGate {
 public:
  // Takes the document, or queues it. Throws where there is no memory to queue it: it is not taken then.
  //
  // The thread that brings a document waits before it queues it, so that a flood of changes does not fill the memory
  // and keep the loading thread at work for ever; but it waits 0.1 s at most, since the load itself, or an observer
  // that the load calls, may be waiting for this very call to end.
  void Arrive(TakeChange take, const std::string& data) EXCLUDES(m_lock);

  void BeginLoad() EXCLUDES(m_lock);
  // Takes what has been queued. Loads may overlap: the last one to end does it.
  void EndLoad() EXCLUDES(m_lock);

 private:
  struct Change {
    TakeChange take = nullptr;
    std::string data;
  };

  bool IsClosed() const REQUIRES(m_lock) { return m_loads > 0 || m_isDraining; }
  bool TakeNext(Change& change) EXCLUDES(m_lock);

  static constexpr std::chrono::milliseconds kPatience{100};

  Mutex m_lock;
  Condition m_drained;
  int m_loads GUARDED_BY(m_lock) = 0;
  bool m_isDraining GUARDED_BY(m_lock) = false;
  std::deque<Change> m_waiting GUARDED_BY(m_lock);
};

}  // namespace QorviViewPlugin
