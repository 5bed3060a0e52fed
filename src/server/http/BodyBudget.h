// SPDX-License-Identifier: Apache-2.0
// The memory that heads and bodies may take together while they are received or worked on.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "base/Mutex.h"

namespace server {

// Nobody may hold more than they leave free: one holder half of it, two a third each, and so on. So the few who send
// much never keep others from sending what is small. Any thread.
class BodyBudget {
 public:
  explicit BodyBudget(uint64_t limit) : m_free(limit) {}

  bool Take(const std::string& holder, uint64_t bytes) {
    const base::MutexLock lock(m_mutex);
    const auto held = m_held.find(holder);
    const uint64_t before = held == m_held.end() ? 0 : held->second;
    if (bytes > m_free || before + bytes > m_free - bytes) return false;
    m_held[holder] = before + bytes;
    m_free -= bytes;
    return true;
  }
  void Give(const std::string& holder, uint64_t bytes) {
    const base::MutexLock lock(m_mutex);
    m_free += bytes;
    const auto held = m_held.find(holder);
    if (held != m_held.end() && (held->second -= bytes) == 0) m_held.erase(held);
  }

 private:
  base::Mutex m_mutex;  // leaf
  uint64_t m_free GUARDED_BY(m_mutex);
  std::map<std::string, uint64_t> m_held GUARDED_BY(m_mutex);
};

// What one request has of it. One thread at a time.
class BodyShare {
 public:
  explicit BodyShare(BodyBudget& budget) : m_budget(budget) {}
  ~BodyShare() { Release(); }
  BodyShare(const BodyShare&) = delete;
  BodyShare& operator=(const BodyShare&) = delete;

  // Has so many bytes afterwards, or as many as before and answers false. The first to ask since the last Release is
  // the holder.
  bool Cover(const std::string& holder, uint64_t bytes) {
    if (bytes <= m_bytes) return true;
    if (m_bytes == 0) m_holder = holder;
    if (!m_budget.Take(m_holder, bytes - m_bytes)) return false;
    m_bytes = bytes;
    return true;
  }
  void Release() {
    if (m_bytes > 0) m_budget.Give(m_holder, std::exchange(m_bytes, 0));
  }

 private:
  BodyBudget& m_budget;
  std::string m_holder;
  uint64_t m_bytes = 0;
};

}  // namespace server
