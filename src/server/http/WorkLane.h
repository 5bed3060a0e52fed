// SPDX-License-Identifier: Apache-2.0
// Threads for requests that take long. Holders take turns, so that the many requests of one do not hold up another's.
#pragma once

#include <deque>
#include <functional>
#include <list>
#include <string>
#include <thread>
#include <vector>

#include "base/Mutex.h"

namespace server {

// Any thread, but for the end.
class WorkLane {
 public:
  using Work = std::function<void()>;  // does not throw

  WorkLane(int threads, size_t maxWaiting, size_t maxWaitingPerHolder);
  ~WorkLane();

  // False: too many wait, of that holder or in all.
  bool Add(const std::string& holder, Work work);
  // What has not begun is dropped; returns when nothing runs any more.
  void Stop();

 private:
  struct Line {
    std::string holder;
    std::deque<Work> works;  // never empty
  };
  Line* Find(const std::string& holder) REQUIRES(m_mutex);
  Work TakeNext() REQUIRES(m_mutex);
  void Run();

  const size_t m_maxWaiting, m_maxWaitingPerHolder;
  base::Mutex m_mutex;  // leaf
  base::Condition m_changed;
  std::list<Line> m_lines GUARDED_BY(m_mutex);  // whose turn it is next stands first
  size_t m_waiting GUARDED_BY(m_mutex) = 0;
  bool m_isStopped GUARDED_BY(m_mutex) = false;
  std::vector<std::thread> m_threads;
};

}  // namespace server
