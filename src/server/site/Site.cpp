// SPDX-License-Identifier: Apache-2.0
#include "server/site/Site.h"

#include <SQLiteCpp/Exception.h>

#include <map>
#include <stdexcept>

#include "server/documents/Replies.h"
#include "server/login/Secrets.h"
#include "server/permissions/Audience.h"
#include "server/site/Seeding.h"
#include "server/site/SiteLoading.h"

namespace server {

namespace {

Catalog LoadCatalog(Database& database, Findings& findings) {
  Catalog catalog;
  LoadSite(database, catalog, findings);
  CheckNames(database, findings);
  return catalog;
}

// Why a seed does not fit, as one plain line; that refuses it.
template <class Action>
void OrSayWhy(std::string& why, const Action& action) {
  try {
    return action();
  } catch (const Refusal& refusal) {
    why = std::string("seed: the groups and views do not fit: ") + refusal.detail;
  } catch (const SQLite::Exception& e) {
    why = std::string("seed: ") + e.what();
  } catch (const std::runtime_error& e) {
    why = e.what();
  }
  throw Refusal::InternalError();
}

}  // namespace

Site::Site(const std::string& dataFile, const LogLimits& limits, const Accounts::Clock& clock,
           std::chrono::milliseconds editPatience)
    : m_store(dataFile),
      m_reading(m_store, Database::Reading()),
      m_accounts(m_reading, clock),
      m_resources(m_reading),
      m_catalog(LoadCatalog(m_store, m_findings)),
      m_log(ChangeLog(m_store, limits).Range()),
      m_editor(m_store, limits, clock, m_catalog),
      m_epochs(m_store, m_log.last),
      m_queue(editPatience) {
  m_store.BecomeEditors();
  m_editing = std::thread([this] { RunEdits(); });
}

Site::~Site() {
  m_queue.End();
  m_editing.join();
}

void Site::Apply(const SeedData& seed) {
  Seeding::Passwords newPasswords;
  for (const SeedUser& user : seed.users) {
    if (!HasUser(user.id)) newPasswords[user.id] = HashPassword(user.password);
  }
  std::string why;
  try {
    Make([&](Editor& editor) { OrSayWhy(why, [&] { editor.Apply(seed, newPasswords); }); });
  } catch (const Refusal& refusal) {
    throw std::runtime_error(why.empty() ? std::string("seed: ") + refusal.detail : why);
  }
}

bool Site::HasUser(int32_t id) {
  const base::MutexLock lock(m_mutex);
  return m_accounts.UserExists(id);
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

Caller Site::Authenticate(const std::string& token) {
  const base::MutexLock lock(m_mutex);
  const std::optional<Caller> caller = m_accounts.Authenticate(token);
  if (!caller) throw Refusal::NoSession();
  return *caller;
}

bool Site::TouchSession(int64_t sessionId) {
  const base::MutexLock lock(m_mutex);
  return m_accounts.Touch(sessionId);
}

bool Site::IsOfHistory(const std::string& history, int64_t number) {
  return m_epochs.Holds(history, number, LastChange());
}

ElementList Site::Views(const Caller& caller) {
  const base::MutexLock lock(m_mutex);
  ElementList list{ObjectKind::kView, m_log.last, {}};
  std::map<int32_t, std::string> ownerNames;
  for (const ViewPtr& view : m_catalog.views.SeenBy(caller.userId)) {
    Text head = view->head;
    if (SightOf(*view, caller.userId) == Sight::kShared) {
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
  ElementList list{ObjectKind::kGroup, m_log.last, {}};
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

FeedPtr Site::OpenFeed(const Caller& caller, int64_t after) {
  const base::MutexLock lock(m_mutex);
  if (!m_log.Reaches(after)) throw Refusal::ChangesGone();
  return std::make_shared<ChangeFeed>(*this, caller, after);
}

ChangeSource::Reach Site::ReadChanges(const FeedPtr& feed, int64_t after, ChangePiece& piece) {
  const base::MutexLock lock(m_mutex);
  if (!m_log.Reaches(after)) return Reach::kLost;
  const auto atHand = [this](int32_t viewId, int64_t documentId) REQUIRES(m_mutex) {
    const ViewPtr view = m_catalog.views.Find(viewId);
    return view && view->documentId == documentId ? view->document : nullptr;
  };
  piece = ReadChangePiece(m_reading, feed->Listener().userId, after, m_log.last, atHand);
  if (piece.upTo < m_log.last) return Reach::kMore;
  m_hub.Add(feed);
  return Reach::kLive;
}

int64_t Site::LastChange() {
  const base::MutexLock lock(m_mutex);
  return m_log.last;
}

void Site::Unsubscribe(ChangeFeed* feed) {
  const base::MutexLock lock(m_mutex);
  m_hub.Remove(feed);
}

}  // namespace server
