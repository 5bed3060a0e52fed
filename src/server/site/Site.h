// SPDX-License-Identifier: Apache-2.0
// The server's content: users and sessions, views and groups, changes, elements, behind one lock. Any thread.
// What a caller may not do throws a Refusal, a broken store an SQLite::Exception; nothing has been changed then.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Mutex.h"
#include "server/changes/ChangeFeed.h"
#include "server/changes/ChangeLog.h"
#include "server/documents/Requests.h"
#include "server/login/Accounts.h"
#include "server/model/Catalog.h"
#include "server/model/Refusal.h"
#include "server/site/Resources.h"
#include "server/site/SeedFile.h"
#include "server/site/Step.h"
#include "server/site/ViewTables.h"
#include "server/store/Database.h"

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

struct Added {
  int32_t id;
  int64_t changeNumber;
};

struct ShareFailure {
  int32_t userId;
  std::string userName;
  Refusal reason;
};

class Site : public ChangeSource {
 public:
  Site(const std::string& dataFile, uint64_t keepChanges, Accounts::Clock clock);

  // Throws std::runtime_error with one plain line when the seed does not fit; nothing has been changed then.
  void Apply(const SeedData& seed);

  bool HasUsers();
  std::vector<User> Users();
  std::optional<User> FindUser(const std::string& name);
  bool AddUser(const std::string& name, const std::string& passwordHash);      // false: there is one
  bool SetPassword(const std::string& name, const std::string& passwordHash);  // false: there is none
  std::string OpenSession(int32_t userId, const std::string& client);
  Caller Authenticate(const std::string& token);  // refuses what is no session
  void CloseSession(const Caller& caller);

  ElementList Views(const Caller& caller);
  ElementList Groups(const Caller& caller);
  std::string ElementsData(const ElementFilter& filter);
  std::string AreasData();
  DefaultView GetDefaultView(const Caller& caller);
  void SetDefaultView(const Caller& caller, const DefaultView& view);

  // Edits answer with the number of their change, the last one where they are several.
  Added AddView(const Caller& caller, ViewInput input);
  int64_t ReplaceView(const Caller& caller, int32_t id, ViewInput input);
  int64_t DeleteView(const Caller& caller, int32_t id);
  int64_t MoveViews(const Caller& caller, const MoveInput& move);
  std::vector<ShareFailure> ShareView(const Caller& caller, int32_t id, const std::vector<int32_t>& users);
  Added AddGroup(const Caller& caller, const GroupInput& input);
  int64_t ReplaceGroup(const Caller& caller, int32_t id, const GroupInput& input);
  int64_t DeleteGroup(const Caller& caller, int32_t id);
  int64_t MoveGroups(const Caller& caller, const MoveInput& move);

  // What the caller hears after that change. Refuses a number that is not kept.
  FeedPtr OpenFeed(const Caller& caller, int64_t after);

  Reach ReadChanges(const FeedPtr& feed, int64_t after, std::vector<Change>& changes) override;
  void Unsubscribe(ChangeFeed* feed) override;
  bool TouchSession(int64_t sessionId) override;

 private:
  // Holds the lock; wakes the feeds that heard something once it is released.
  struct SCOPED_CAPABILITY Locked {
    explicit Locked(base::Mutex& mutex) ACQUIRE(mutex) : lock(mutex) {}
    ~Locked() RELEASE();

    WakeList wake;
    base::MutexLock lock;
  };

  // Edits and seeds end here: rows and change records in one transaction, then the catalog, then the listeners. Each
  // object occurs at most once. New objects get their ids. The number of the last change.
  int64_t Commit(Locked& locked, Transaction& transaction, const Caller& caller, std::vector<Step>& steps)
      REQUIRES(m_mutex);
  int64_t Commit(Locked& locked, const Caller& caller, std::vector<Step>& steps) REQUIRES(m_mutex);
  std::vector<Change> Write(const Caller& caller, std::vector<Step>& steps) REQUIRES(m_mutex);
  // The store has the steps already, so that the catalog must come to have them too: waits until there is memory.
  void ApplyCommitted(const std::vector<Step>& steps) noexcept REQUIRES(m_mutex);

  base::Mutex m_mutex;  // never held across a call out of the server
  Database m_database GUARDED_BY(m_mutex);
  Accounts m_accounts GUARDED_BY(m_mutex);
  Resources m_resources GUARDED_BY(m_mutex);
  ViewTables m_tables GUARDED_BY(m_mutex);
  ChangeLog m_log GUARDED_BY(m_mutex);
  Catalog m_catalog GUARDED_BY(m_mutex);
  ChangeHub m_hub GUARDED_BY(m_mutex);
};

}  // namespace server
