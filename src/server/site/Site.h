// SPDX-License-Identifier: Apache-2.0
// The server's content: users and sessions, views and groups, changes, elements. Any thread.
//
// Who reads takes the site's lock for a moment, and a connection to the store that waits for nobody who writes. Edits
// go to the editing thread, which makes those that wait at the same moment in one transaction, publishes them to the
// readers and listeners step by step, and then answers each. What a caller may not do throws a Refusal, a broken store
// an SQLite::Exception; nothing has been changed then.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/Mutex.h"
#include "server/changes/ChangeFeed.h"
#include "server/changes/ChangeLog.h"
#include "server/documents/Requests.h"
#include "server/login/Accounts.h"
#include "server/model/Catalog.h"
#include "server/model/Refusal.h"
#include "server/site/EditQueue.h"
#include "server/site/Editor.h"
#include "server/site/Resources.h"
#include "server/site/SeedFile.h"
#include "server/store/Database.h"
#include "server/store/Findings.h"

namespace server {

// A list as it was at one moment; its texts are shared with the catalog.
struct ElementList {
  struct Element {
    Text head;
    Text document;  // null for a group
  };
  ObjectKind kind = ObjectKind::kView;
  int64_t changeNumber = 0;  // of the last change contained
  std::vector<Element> elements;
};

class Site : public ChangeSource {
 public:
  // `editPatience`: how long a submitted edit may wait for another process that holds the store.
  Site(const std::string& dataFile, const LogLimits& limits, const Accounts::Clock& clock,
       std::chrono::milliseconds editPatience = std::chrono::seconds(1));
  ~Site() override;
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;

  // What was wrong in the store when it was read, see SiteLoading.h. Constant.
  const Findings& FoundAtStart() const { return m_findings; }

  // --- edits

  // `make` and `answer` run on the editing thread: `make` within a transaction, what it throws refuses this edit alone;
  // `answer` once it is safe and seen by readers, or with why it was refused. `answer` must not throw.
  void Submit(std::function<void(Editor&)> make, std::function<void(const Refusal*)> answer) {
    m_queue.Submit(std::move(make), std::move(answer));
  }
  // The same for who waits. Not on the editing thread.
  void Make(const std::function<void(Editor&)>& make) { m_queue.SubmitAndWait(make); }
  // Throws std::runtime_error with one plain line when the seed does not fit; nothing has been changed then.
  void Apply(const SeedData& seed);
  // Follows what other processes have done in the store: ends the streams of sessions that they have ended, and deletes
  // the groups and views of users that they have deleted, and what was shared with them. Throws std::runtime_error with
  // one plain line when the store cannot be written.
  void FollowAccounts();

  // --- reading

  bool HasUsers();
  std::vector<User> Users();
  std::optional<User> FindUser(const std::string& name);
  Caller Authenticate(const std::string& token);  // refuses what is no session

  // Of this store since it was opened.
  const std::string& History() const { return m_epochs.Current(); }
  // Whether that number was one of that history's, and this store has gone on from there.
  bool IsOfHistory(const std::string& history, int64_t number);

  ElementList Views(const Caller& caller);
  ElementList Groups(const Caller& caller);
  std::string ElementsData(const ElementFilter& filter);
  std::string AreasData();
  DefaultView GetDefaultView(const Caller& caller);

  // What the caller hears after that change. Refuses a number that is not kept.
  FeedPtr OpenFeed(const Caller& caller, int64_t after);

  Reach ReadChanges(const FeedPtr& feed, int64_t after, ChangePiece& piece) override;
  int64_t LastChange() override;
  void Unsubscribe(ChangeFeed* feed) override;
  bool TouchSession(int64_t sessionId) override;

 private:
  bool HasUser(int32_t id);
  void CloseEndedSessions();
  std::vector<int32_t> DeletedUsers();

  // --- the editing thread (SiteEditing.cpp)

  void RunEdits();
  void TryToMakeWaiting() noexcept;
  void MakeWaiting();
  void MakeAll(Edits& edits);
  Accounts::Uses UnwrittenUses();
  // Before the transaction ends that drops the older ones, lest a reader looks for them.
  void PublishOldest(int64_t oldest);
  // In pieces, lest readers wait; each piece is a state that a list may show.
  void Publish() noexcept;
  size_t PublishPiece(size_t first) noexcept;
  void PublishEnd(const Accounts::Uses& written) noexcept;

  Findings m_findings{20};  // changed by the constructor only
  Database m_store;         // the editing thread's, once that runs

  base::Mutex m_mutex;  // never held for long, nor across a call out of the server
  Database m_reading GUARDED_BY(m_mutex);
  Accounts m_accounts GUARDED_BY(m_mutex);
  Resources m_resources GUARDED_BY(m_mutex);
  Catalog m_catalog GUARDED_BY(m_mutex);
  LogRange m_log GUARDED_BY(m_mutex);
  ChangeHub m_hub GUARDED_BY(m_mutex);

  Editor m_editor;  // the editing thread's
  const Epochs m_epochs;
  EditQueue m_queue;
  std::thread m_editing;
};

}  // namespace server
