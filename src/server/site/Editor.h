// SPDX-License-Identifier: Apache-2.0
// What edits do, several of them in one transaction: each checks by the rules, against what those before it have left,
// says what each object becomes, and writes rows and changes. Nothing of it is seen by readers before the site
// publishes it. Belongs to the site's editing thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "server/changes/ChangeLog.h"
#include "server/documents/Requests.h"
#include "server/login/Accounts.h"
#include "server/model/Catalog.h"
#include "server/model/Refusal.h"
#include "server/site/Resources.h"
#include "server/site/SeedFile.h"
#include "server/site/Seeding.h"
#include "server/site/Step.h"
#include "server/site/ViewTables.h"
#include "server/store/Database.h"

namespace server {

struct Added {
  int32_t id;
  int64_t changeNumber;
};

struct ShareFailure {
  int32_t userId;
  std::string userName;
  Refusal reason;
};

class Editor {
 public:
  // `catalog` is what the store holds.
  Editor(Database& database, const LogLimits& limits, Accounts::Clock clock, const Catalog& catalog);

  // --- edits. What a caller may not do throws a Refusal, a broken store an SQLite::Exception. Those of views and
  // groups answer with the number of their change, the last one where they are several.

  Added AddView(const Caller& caller, ViewInput input);
  int64_t ReplaceView(const Caller& caller, int32_t id, ViewInput input);
  int64_t DeleteView(const Caller& caller, int32_t id);
  int64_t MoveViews(const Caller& caller, const MoveInput& move);
  std::vector<ShareFailure> ShareView(const Caller& caller, int32_t id, const std::vector<int32_t>& users);
  Added AddGroup(const Caller& caller, const GroupInput& input);
  int64_t ReplaceGroup(const Caller& caller, int32_t id, const GroupInput& input);
  int64_t DeleteGroup(const Caller& caller, int32_t id);
  int64_t MoveGroups(const Caller& caller, const MoveInput& move);
  void SetDefaultView(const Caller& caller, const DefaultView& view);
  bool AddUser(const std::string& name, const std::string& passwordHash);      // false: there is one
  bool SetPassword(const std::string& name, const std::string& passwordHash);  // false: there is none
  std::string OpenSession(int32_t userId, const std::string& client);
  void CloseSession(const Caller& caller);
  // Deletes the groups and views of a user whom the store has no more, and what was shared with that user.
  void FollowDeletion(int32_t userId);
  void Apply(const SeedData& seed, const Seeding::Passwords& newPasswords);

  // --- transactions of edits

  // False: another process holds the store's lock.
  bool Begin();
  // Makes an edit. Why it was refused; it has left nothing then. Throws where the whole transaction must be given up.
  std::optional<Refusal> Try(const std::function<void(Editor&)>& edit);
  void WriteUses(const Accounts::Uses& uses) { m_accounts.Write(uses); }
  // The range that the log has once this is committed.
  const LogRange& Log() const { return m_log.Range(); }
  void TrimLog() { m_log.Trim(); }
  // What was made is safe afterwards.
  void Commit();
  // As if nothing had been made since Begin.
  void GiveUp() noexcept;
  void Checkpoint() noexcept { m_database.Checkpoint(); }

  // What the committed edits were, for who publishes it, until the next Begin.
  const std::vector<Step>& Steps() const { return m_steps; }
  const std::vector<Change>& Changes() const { return m_changes; }
  const std::vector<int64_t>& ClosedSessions() const { return m_closedSessions; }

 private:
  // Where an edit began.
  struct Mark {
    size_t steps, closedSessions;
    LogRange log;
  };
  Mark Here() const { return {m_steps.size(), m_closedSessions.size(), m_log.Range()}; }
  void BackTo(const Mark& mark) noexcept;

  // Edits and seeds end here. Each object occurs at most once. New objects get their ids. The number of the last
  // change.
  int64_t Write(const Caller& caller, Step step);
  int64_t Write(const Caller& caller, std::vector<Step> steps);
  void Save(Step& step, int64_t number);
  std::vector<Step> StepsOfDeleting(int32_t userId) const;

  Database& m_database;
  Accounts m_accounts;
  Resources m_resources;
  ViewTables m_tables;
  ChangeLog m_log;
  Catalog m_catalog;  // with all steps made so far

  std::optional<Transaction> m_transaction;
  Mark m_begin{0, 0, {}};
  std::vector<Step> m_steps;
  std::vector<Change> m_changes;  // one for each step
  std::vector<int64_t> m_closedSessions;
};

}  // namespace server
