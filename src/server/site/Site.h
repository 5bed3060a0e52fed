// SPDX-License-Identifier: Apache-2.0
// The server's content: users and sessions, views and groups, changes, elements, behind one lock. Any thread.
// What a caller may not do throws a Refusal, a broken store an SQLite::Exception; nothing has been changed then.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "server/changes/ChangeFeed.h"
#include "server/changes/ChangeLog.h"
#include "server/documents/Documents.h"
#include "server/login/Accounts.h"
#include "server/site/Catalog.h"
#include "server/site/Resources.h"
#include "server/site/SeedFile.h"
#include "server/site/ViewTables.h"
#include "server/store/Database.h"

namespace server {

// A list as it was at one moment; its texts are shared with the catalog.
struct ElementList {
  struct Element {
    Text head;
    Text document;  // null for a group
  };
  Kind kind = Kind::kView;
  int64_t sequence = 0;  // the last change contained
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
  struct Locked {
    explicit Locked(std::mutex& mutex) : lock(mutex) {}
    ~Locked();
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

    WakeList wake;
    std::unique_lock<std::mutex> lock;
  };

  // One object's step from what it was to what it becomes; null before: new, null after: deleted.
  struct Step {
    Kind kind = Kind::kView;
    bool own = true;             // the caller edited this very object
    bool contentChanged = true;  // not only who may see it
    ViewPtr oldView;
    std::shared_ptr<View> newView;
    GroupPtr oldGroup;
    std::shared_ptr<Group> newGroup;
  };
  static Step ViewStep(ViewPtr before, std::shared_ptr<View> after);
  static Step GroupStep(GroupPtr before, std::shared_ptr<Group> after);

  // All edits end here: rows and change records in one transaction, then the catalog, then the listeners. Each object
  // occurs at most once. New objects get their ids. The number of the last change.
  int64_t Commit(Locked& locked, const Caller& caller, std::vector<Step>& steps);
  void Write(const Caller& caller, std::vector<Step>& steps, std::vector<Change>& changes);
  Change RecordOf(const Caller& caller, const Step& step, int64_t number);
  static void ApplyTo(Catalog& catalog, const std::vector<Step>& steps);
  // The store has the steps already, so that the catalog must come to have them too: waits until there is memory.
  void ApplyCommitted(const std::vector<Step>& steps) noexcept;

  std::vector<Step> SeedSteps(const SeedData& seed);
  std::map<int32_t, std::string> HashNewPasswords(const SeedData& seed);
  void SeedUsers(const SeedData& seed, const std::map<int32_t, std::string>& passwordHashes);
  bool IsSeeded(const std::string& kind, int32_t id, const std::string& digest);
  void MarkSeeded(const std::string& kind, int32_t id, const std::string& digest);

  std::mutex m_mutex;  // guards what follows; never held across a call out of the server
  Database m_database;
  Accounts m_accounts;
  Resources m_resources;
  ViewTables m_tables;
  ChangeLog m_log;
  Catalog m_catalog;
  ChangeHub m_hub;
};

}  // namespace server
