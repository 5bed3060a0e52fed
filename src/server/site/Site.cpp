// SPDX-License-Identifier: Apache-2.0
#include "server/site/Site.h"

#include <SQLiteCpp/Exception.h>

#include <chrono>
#include <map>
#include <new>
#include <stdexcept>
#include <thread>

#include "server/documents/Replies.h"
#include "server/permissions/Audience.h"
#include "server/site/Seeding.h"

namespace server {

namespace {

constexpr size_t kReadChanges = 256;
constexpr size_t kReadBytes = size_t{1} << 20;

}  // namespace

Site::Locked::~Locked() {
  lock.Unlock();
  for (const auto& [pointer, feed] : wake) {
    if (feed) feed->Wake();
  }
}

Site::Site(const std::string& dataFile, uint64_t keepChanges, Accounts::Clock clock)
    : m_database(dataFile),
      m_accounts(m_database, std::move(clock)),
      m_resources(m_database),
      m_tables(m_database),
      m_log(m_database, keepChanges) {
  m_tables.Load(m_catalog);
}

void Site::Apply(const SeedData& seed) try {
  Locked locked(m_mutex);
  Seeding seeding(seed, m_database, m_accounts, m_resources, m_catalog);
  Transaction transaction(m_database);
  std::vector<Step> steps = seeding.Write();
  Commit(locked, transaction, {}, steps);
} catch (const Refusal& refusal) {
  throw std::runtime_error(std::string("seed: the groups and views do not fit: ") + refusal.detail);
} catch (const SQLite::Exception& e) {
  throw std::runtime_error(std::string("seed: ") + e.what());
}

int64_t Site::Commit(Locked& locked, const Caller& caller, std::vector<Step>& steps) {
  Transaction transaction(m_database);
  return Commit(locked, transaction, caller, steps);
}

int64_t Site::Commit(Locked& locked, Transaction& transaction, const Caller& caller, std::vector<Step>& steps) {
  const std::vector<Change> changes = Write(caller, steps);
  transaction.Commit();

  ApplyCommitted(steps);
  m_log.Committed(changes);
  m_hub.Publish(changes, locked.wake);
  return m_log.Last();
}

std::vector<Change> Site::Write(const Caller& caller, std::vector<Step>& steps) {
  std::vector<Change> changes;
  int64_t number = m_log.Last();
  for (Step& step : steps) {
    ++number;
    if (step.newView) {
      step.newView->changeNumber = number;
      m_tables.Save(*step.newView);
    } else if (step.oldView) {
      m_tables.DeleteView(*step.oldView);
    } else if (step.newGroup) {
      step.newGroup->changeNumber = number;
      m_tables.Save(*step.newGroup);
    } else {
      m_tables.DeleteGroup(step.oldGroup->id);
    }
    changes.push_back(ChangeOf(step, number, caller, m_accounts));
  }
  m_log.Append(changes);
  return changes;
}

void Site::ApplyCommitted(const std::vector<Step>& steps) noexcept {
  while (true) {
    try {
      return ApplyTo(m_catalog, steps);
    } catch (const std::bad_alloc&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
}

bool Site::HasUsers() {
  const base::MutexLock lock(m_mutex);
  return m_accounts.HasUsers();
}

std::vector<User> Site::Users() {
  const base::MutexLock lock(m_mutex);
  return m_accounts.Users();
}

std::optional<User> Site::FindUser(const std::string& name) {
  const base::MutexLock lock(m_mutex);
  return m_accounts.FindUser(name);
}

bool Site::AddUser(const std::string& name, const std::string& passwordHash) {
  const base::MutexLock lock(m_mutex);
  return m_accounts.AddUser(0, name, passwordHash, 0);
}

bool Site::SetPassword(const std::string& name, const std::string& passwordHash) {
  const base::MutexLock lock(m_mutex);
  return m_accounts.SetPassword(name, passwordHash);
}

std::string Site::OpenSession(int32_t userId, const std::string& client) {
  const base::MutexLock lock(m_mutex);
  return m_accounts.OpenSession(userId, client);
}

Caller Site::Authenticate(const std::string& token) {
  const base::MutexLock lock(m_mutex);
  const std::optional<Caller> caller = m_accounts.Authenticate(token);
  if (!caller) throw Refusal::NoSession();
  return *caller;
}

void Site::CloseSession(const Caller& caller) {
  Locked locked(m_mutex);
  m_accounts.CloseSession(caller.sessionId);
  m_hub.CloseSession(caller.sessionId, locked.wake);
}

bool Site::TouchSession(int64_t sessionId) {
  const base::MutexLock lock(m_mutex);
  return m_accounts.Touch(sessionId);
}

ElementList Site::Views(const Caller& caller) {
  const base::MutexLock lock(m_mutex);
  ElementList list{ObjectKind::kView, m_log.Last(), {}};
  std::map<int32_t, std::string> ownerNames;
  for (const ViewPtr& view : m_catalog.views.SeenBy(caller.userId)) {
    Text head = view->head;
    if (AudienceOf(*view).Of(caller.userId) == Sight::kShared) {
      const auto [owner, isNew] = ownerNames.try_emplace(view->userId);
      if (isNew) owner->second = m_accounts.UserName(view->userId);
      head = std::make_shared<std::string>(SharedViewHead(*view, owner->second));
    }
    list.elements.push_back({std::move(head), view->document});
  }
  return list;
}

ElementList Site::Groups(const Caller& caller) {
  const base::MutexLock lock(m_mutex);
  ElementList list{ObjectKind::kGroup, m_log.Last(), {}};
  for (const GroupPtr& group : m_catalog.groups.SeenBy(caller.userId)) list.elements.push_back({group->head, nullptr});
  return list;
}

std::string Site::ElementsData(const ElementFilter& filter) {
  const base::MutexLock lock(m_mutex);
  return m_resources.ElementsData(filter);
}

std::string Site::AreasData() {
  const base::MutexLock lock(m_mutex);
  return m_resources.AreasData();
}

DefaultView Site::GetDefaultView(const Caller& caller) {
  const base::MutexLock lock(m_mutex);
  return m_resources.GetDefaultView(caller.userId);
}

void Site::SetDefaultView(const Caller& caller, const DefaultView& view) {
  const base::MutexLock lock(m_mutex);
  m_resources.SetDefaultView(caller.userId, view);
}

FeedPtr Site::OpenFeed(const Caller& caller, int64_t after) {
  const base::MutexLock lock(m_mutex);
  if (!m_log.Reaches(after)) throw Refusal::ChangesGone();
  return std::make_shared<ChangeFeed>(*this, caller, after);
}

ChangeSource::Reach Site::ReadChanges(const FeedPtr& feed, int64_t after, std::vector<Change>& changes) {
  const base::MutexLock lock(m_mutex);
  if (!m_log.Reaches(after)) return Reach::kLost;
  changes = m_log.Read(after, kReadChanges, kReadBytes);
  if (!changes.empty() && changes.back().number < m_log.Last()) return Reach::kMore;
  m_hub.Add(feed);
  return Reach::kLive;
}

void Site::Unsubscribe(ChangeFeed* feed) {
  const base::MutexLock lock(m_mutex);
  m_hub.Remove(feed);
}

}  // namespace server
