// SPDX-License-Identifier: Apache-2.0
// Edits on their way to the site's editing thread. Any thread may submit; what waits at one moment is taken together.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <utility>

#include "base/Mutex.h"
#include "server/model/Refusal.h"
#include "server/site/Editor.h"

namespace server {

struct Edit {
  using Time = std::chrono::steady_clock::time_point;

  std::function<void(Editor&)> make;  // what it throws is why the edit is refused, and undoes it
  // Called once what was made is safe, or with why it was refused. On the editing thread; must not throw.
  std::function<void(const Refusal*)> answer;
  Time begin;  // by then, or it is refused because the store is busy
  std::optional<Refusal> refusal{};
};
using Edits = std::list<Edit>;  // edits go from list to list without a need for memory

class EditQueue {
 public:
  // `patience`: how long what is submitted may wait for the store.
  explicit EditQueue(std::chrono::milliseconds patience) : m_patience(patience) {}

  void Submit(std::function<void(Editor&)> make, std::function<void(const Refusal*)> answer) {
    Submit(std::move(make), std::move(answer), m_patience);
  }
  // Waits until it is answered. Throws the Refusal.
  void SubmitAndWait(const std::function<void(Editor&)>& make);

  // --- for the editing thread

  // Waits for edits, for the time to pass or for the end. False: the end, and nothing is waiting.
  bool Await(std::chrono::milliseconds time);
  void Pause(std::chrono::milliseconds time);  // shorter at the end
  bool IsEmpty();
  Edits TakeAll();
  // Those that have waited as long as they may.
  Edits TakeOverdue();

  void End();

 private:
  void Submit(std::function<void(Editor&)> make, std::function<void(const Refusal*)> answer,
              std::chrono::milliseconds patience);

  const std::chrono::milliseconds m_patience;
  base::Mutex m_mutex;  // leaf
  base::Condition m_changed;
  Edits m_edits GUARDED_BY(m_mutex);
  bool m_isEnding GUARDED_BY(m_mutex) = false;
};

void AnswerAll(Edits& edits) noexcept;
void RefuseAll(Edits& edits, const Refusal& refusal) noexcept;  // and answers

}  // namespace server
