// SPDX-License-Identifier: Apache-2.0
// The one way by which edits and seeds change a site: store, catalog, listeners.
#include <chrono>
#include <cstdio>
#include <exception>
#include <new>

#include "server/site/Site.h"

namespace server {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kUsesPause{5000};   // uses of sessions are written that late where there are no edits
constexpr milliseconds kBusyPause{10};     // between attempts to write while another process does
constexpr milliseconds kPieceTime{5};      // to publish with the lock held
constexpr milliseconds kBetweenPieces{1};  // for those who wait for the lock

Refusal WhyFailed(const std::exception& failure) {
  return dynamic_cast<const std::bad_alloc*>(&failure) ? Refusal::NoMemory() : Refusal::InternalError();
}

}  // namespace

void Site::RunEdits() {
  while (m_queue.Await(kUsesPause)) TryToMakeWaiting();
  TryToMakeWaiting();  // the uses of sessions
}

void Site::TryToMakeWaiting() noexcept {
  try {
    MakeWaiting();
  } catch (const std::exception& e) {
    Edits edits = m_queue.TakeAll();
    if (!edits.empty()) std::fprintf(stderr, "viewserver: no transaction: %s\n", e.what());
    RefuseAll(edits, WhyFailed(e));
    m_queue.Pause(kBusyPause);
  }
}

void Site::MakeWaiting() {
  if (m_queue.IsEmpty() && UnwrittenUses().empty()) return;
  if (!m_editor.Begin()) {
    Edits overdue = m_queue.TakeOverdue();
    RefuseAll(overdue, Refusal::StoreBusy());
    return m_queue.Pause(kBusyPause);
  }
  Edits edits = m_queue.TakeAll();
  try {
    MakeAll(edits);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "viewserver: a transaction fails: %s\n", e.what());
    m_editor.GiveUp();
    PublishOldest(m_editor.Log().oldest);
    return RefuseAll(edits, WhyFailed(e));
  }
  AnswerAll(edits);
  edits.clear();
  m_editor.Checkpoint();
}

void Site::MakeAll(Edits& edits) {
  const Accounts::Uses uses = UnwrittenUses();
  m_editor.WriteUses(uses);  // first: a log-in drops the sessions that were not used for long
  for (Edit& edit : edits) edit.refusal = m_editor.Try(edit.make);
  m_editor.TrimLog();
  PublishOldest(m_editor.Log().oldest);
  m_editor.Commit();
  // From here on nothing may fail.
  Publish();
  PublishEnd(uses);
}

Accounts::Uses Site::UnwrittenUses() {
  const base::MutexLock lock(m_mutex);
  return m_accounts.Unwritten();
}

void Site::PublishOldest(int64_t oldest) {
  const base::MutexLock lock(m_mutex);
  m_log.oldest = oldest;
}

void Site::Publish() noexcept {
  for (size_t next = 0; next < m_editor.Steps().size();) {
    if (next > 0) std::this_thread::sleep_for(kBetweenPieces);
    next = PublishPiece(next);
  }
}

size_t Site::PublishPiece(size_t first) noexcept {
  const std::vector<Step>& steps = m_editor.Steps();
  const auto end = Clock::now() + kPieceTime;
  size_t next = first;
  WakeList wake;
  try {
    const base::MutexLock lock(m_mutex);
    do {
      const Change& change = m_editor.Changes()[next];
      ApplyTo(m_catalog, steps[next]);
      m_log.last = change.number;
      m_hub.Publish(change, wake);
    } while (++next < steps.size() && Clock::now() < end);
  } catch (const std::bad_alloc&) {
    std::this_thread::sleep_for(milliseconds(10));  // there will be memory, for others have it and go on
  }
  Wake(wake);
  return next;
}

void Site::PublishEnd(const Accounts::Uses& written) noexcept {
  WakeList wake;
  {
    const base::MutexLock lock(m_mutex);
    m_accounts.Forget(written);
    for (const int64_t session : m_editor.ClosedSessions()) {
      m_accounts.ForgetSession(session);
      m_hub.Close([session](const Caller& listener) { return listener.sessionId == session; }, wake);
    }
  }
  Wake(wake);
}

}  // namespace server
