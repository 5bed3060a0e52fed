// SPDX-License-Identifier: Apache-2.0
#include "server/site/EditQueue.h"

#include <algorithm>
#include <utility>

namespace server {

namespace {

constexpr std::chrono::seconds kLocalPatience{10};  // of the process that owns the server

}  // namespace

void EditQueue::Submit(std::function<void(Editor&)> make, std::function<void(const Refusal*)> answer,
                       std::chrono::milliseconds patience) {
  Edits one;
  one.push_back({std::move(make), std::move(answer), std::chrono::steady_clock::now() + patience});
  const base::MutexLock lock(m_mutex);
  m_edits.splice(m_edits.end(), one);
  m_changed.NotifyAll();
}

void EditQueue::SubmitAndWait(const std::function<void(Editor&)>& make) {
  base::Mutex mutex;
  base::Condition answered;
  bool isDone = false;
  std::optional<Refusal> refusal;
  const auto answer = [&](const Refusal* why) {
    const base::MutexLock lock(mutex);
    if (why) refusal = *why;
    isDone = true;
    answered.NotifyAll();
  };
  Submit([&make](Editor& editor) { make(editor); }, answer, kLocalPatience);
  base::MutexLock lock(mutex);
  answered.Wait(lock, [&] { return isDone; });
  if (refusal) throw *refusal;
}

bool EditQueue::Await(std::chrono::milliseconds time) {
  base::MutexLock lock(m_mutex);
  m_changed.WaitFor(lock, time, [this]() REQUIRES(m_mutex) { return !m_edits.empty() || m_isEnding; });
  return !m_edits.empty() || !m_isEnding;
}

void EditQueue::Pause(std::chrono::milliseconds time) {
  base::MutexLock lock(m_mutex);
  m_changed.WaitFor(lock, time, [this]() REQUIRES(m_mutex) { return m_isEnding; });
}

bool EditQueue::IsEmpty() {
  const base::MutexLock lock(m_mutex);
  return m_edits.empty();
}

Edits EditQueue::TakeAll() {
  const base::MutexLock lock(m_mutex);
  return std::exchange(m_edits, {});
}

Edits EditQueue::TakeOverdue() {
  const auto now = std::chrono::steady_clock::now();
  Edits overdue;
  const base::MutexLock lock(m_mutex);
  for (auto it = m_edits.begin(); it != m_edits.end();) {
    const auto edit = it++;
    if (edit->begin <= now || m_isEnding) overdue.splice(overdue.end(), m_edits, edit);
  }
  return overdue;
}

void EditQueue::End() {
  const base::MutexLock lock(m_mutex);
  m_isEnding = true;
  m_changed.NotifyAll();
}

void AnswerAll(Edits& edits) noexcept {
  for (const Edit& edit : edits) edit.answer(edit.refusal ? &*edit.refusal : nullptr);
}

void RefuseAll(Edits& edits, const Refusal& refusal) noexcept {
  for (Edit& edit : edits) edit.refusal = refusal;
  AnswerAll(edits);
}

}  // namespace server
