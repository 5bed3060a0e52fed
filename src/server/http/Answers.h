// SPDX-License-Identifier: Apache-2.0
// What has been begun for clients, so that a server that ends still answers it.
#pragma once

#include <chrono>

#include "base/Mutex.h"

namespace server {

// Any thread.
class Answers {
 public:
  // An answer that is owed as long as this lives.
  class Owed {
   public:
    explicit Owed(Answers& answers) : m_answers(answers), m_isWelcome(answers.Begin()) {}
    ~Owed() { m_answers.Finish(); }
    Owed(const Owed&) = delete;
    Owed& operator=(const Owed&) = delete;

    // Whether it was begun before the server's end.
    bool IsWelcome() const { return m_isWelcome; }

   private:
    Answers& m_answers;
    const bool m_isWelcome;
  };

  bool IsEnding() {
    const base::MutexLock lock(m_mutex);
    return m_isEnding;
  }
  // From now on nothing is welcome. Waits for what was begun, no longer than that.
  void End(std::chrono::milliseconds patience) {
    base::MutexLock lock(m_mutex);
    m_isEnding = true;
    m_changed.WaitFor(lock, patience, [this]() REQUIRES(m_mutex) { return m_owed == 0; });
  }

 private:
  bool Begin() {
    const base::MutexLock lock(m_mutex);
    ++m_owed;
    return !m_isEnding;
  }
  void Finish() {
    const base::MutexLock lock(m_mutex);
    if (--m_owed == 0) m_changed.NotifyAll();
  }

  base::Mutex m_mutex;  // leaf
  base::Condition m_changed;
  int m_owed GUARDED_BY(m_mutex) = 0;
  bool m_isEnding GUARDED_BY(m_mutex) = false;
};

}  // namespace server
