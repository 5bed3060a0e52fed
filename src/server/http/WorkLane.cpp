// SPDX-License-Identifier: Apache-2.0
#include "server/http/WorkLane.h"

#include <algorithm>
#include <utility>

namespace server {

WorkLane::WorkLane(int threads, size_t maxWaiting, size_t maxWaitingPerHolder)
    : m_maxWaiting(maxWaiting), m_maxWaitingPerHolder(maxWaitingPerHolder) {
  for (int i = 0; i < threads; ++i) m_threads.emplace_back([this] { Run(); });
}

WorkLane::~WorkLane() {
  Stop();
}

bool WorkLane::Add(const std::string& holder, Work work) {
  const base::MutexLock lock(m_mutex);
  if (m_waiting >= m_maxWaiting || m_isStopped) return false;
  if (Line* line = Find(holder)) {
    if (line->works.size() >= m_maxWaitingPerHolder) return false;
    line->works.push_back(std::move(work));
  } else {
    std::list<Line> fresh(1);  // complete before it stands there: memory may run out on the way
    fresh.front().holder = holder;
    fresh.front().works.push_back(std::move(work));
    m_lines.splice(m_lines.end(), fresh);
  }
  ++m_waiting;
  m_changed.NotifyAll();
  return true;
}

void WorkLane::Stop() {
  std::list<Line> dropped;
  {
    const base::MutexLock lock(m_mutex);
    m_isStopped = true;
    m_lines.swap(dropped);
    m_waiting = 0;
    m_changed.NotifyAll();
  }
  for (std::thread& thread : m_threads) thread.join();
  m_threads.clear();
}

WorkLane::Line* WorkLane::Find(const std::string& holder) {
  const auto line =
      std::find_if(m_lines.begin(), m_lines.end(), [&holder](const Line& one) { return one.holder == holder; });
  return line == m_lines.end() ? nullptr : &*line;
}

WorkLane::Work WorkLane::TakeNext() {
  Line& line = m_lines.front();
  Work work = std::move(line.works.front());
  line.works.pop_front();
  --m_waiting;
  if (line.works.empty()) {
    m_lines.pop_front();
  } else {
    m_lines.splice(m_lines.end(), m_lines, m_lines.begin());
  }
  return work;
}

void WorkLane::Run() {
  base::MutexLock lock(m_mutex);
  while (true) {
    m_changed.Wait(lock, [this]() REQUIRES(m_mutex) { return m_isStopped || !m_lines.empty(); });
    if (m_isStopped) return;
    Work work = TakeNext();
    lock.Unlock();
    work();
    work = nullptr;  // what it holds ends outside the lock
    lock.Lock();
  }
}

}  // namespace server
