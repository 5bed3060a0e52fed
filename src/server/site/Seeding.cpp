// SPDX-License-Identifier: Apache-2.0
#include "server/site/Seeding.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "server/login/Secrets.h"
#include "server/permissions/Rules.h"

namespace server {

Seeding::Seeding(const SeedData& seed, Database& database, Accounts& accounts, Resources& resources,
                 const Catalog& catalog)
    : m_seed(seed), m_database(database), m_accounts(accounts), m_resources(resources), m_catalog(catalog) {
  for (const SeedUser& user : seed.users) {
    if (!accounts.UserExists(user.id)) m_newPasswords[user.id] = HashPassword(user.password);
  }
}

bool Seeding::IsSeeded(const std::string& kind, int32_t id, const std::string& digest) {
  Query query(m_database, "SELECT digest FROM seeded WHERE kind = ? AND id = ?", kind, id);
  return query.Next() && query.String(0) == digest;
}

void Seeding::MarkSeeded(const std::string& kind, int32_t id, const std::string& digest) {
  Execute(m_database, "INSERT OR REPLACE INTO seeded (kind, id, digest) VALUES (?,?,?)", kind, id, digest);
}

std::vector<Step> Seeding::Write() {
  WriteUsers();
  for (const SeedArea& area : m_seed.areas) m_resources.PutArea(area.id, area.name);
  for (const Element& element : m_seed.elements) m_resources.PutElement(element);

  std::vector<Step> steps = Steps();
  Check(steps);
  for (const SeedGroup& entry : m_seed.groups) MarkSeeded("group", entry.id, entry.digest);
  for (const SeedView& entry : m_seed.views) MarkSeeded("view", entry.id, entry.digest);
  return steps;
}

void Seeding::WriteUsers() {
  for (const SeedUser& user : m_seed.users) {
    if (IsSeeded("user", user.id, user.digest)) continue;
    const std::optional<User> namesake = m_accounts.FindUser(user.name);
    if (namesake && namesake->id != user.id) throw std::runtime_error("seed: there is another user " + user.name);
    const auto hash = m_newPasswords.find(user.id);
    if (hash == m_newPasswords.end()) {
      m_accounts.UpdateUser(user.id, user.name, user.ptz);
    } else {
      m_accounts.AddUser(user.id, user.name, hash->second, user.ptz);
    }
    MarkSeeded("user", user.id, user.digest);
  }
}

std::vector<Step> Seeding::Steps() {
  std::vector<Step> steps;
  for (const SeedGroup& entry : m_seed.groups) {
    if (!IsSeeded("group", entry.id, entry.digest)) steps.push_back(StepOf(entry));
  }
  for (const SeedView& entry : m_seed.views) {
    if (!IsSeeded("view", entry.id, entry.digest)) steps.push_back(StepOf(entry));
  }
  return steps;
}

Step Seeding::StepOf(const SeedGroup& entry) {
  const GroupInput& input = entry.input;
  auto group = std::make_shared<Group>();
  group->id = entry.id;
  group->name = input.name;
  group->folderId = input.folderId;
  group->userId = input.userId;
  group->sharedFolder = input.sharedFolder;
  group->sequence = PlaceIn(ObjectKind::kGroup, {input.folderId, input.userId}, entry.sequence);
  return {m_catalog.groups.Find(entry.id), std::move(group)};
}

Step Seeding::StepOf(const SeedView& entry) {
  ViewPtr old = m_catalog.views.Find(entry.id);
  auto view = std::make_shared<View>();
  view->id = entry.id;
  view->guid = !entry.guid.empty() ? entry.guid : old ? old->guid : MakeGuid();
  view->userId = entry.input.userId;
  view->sequence = PlaceIn(ObjectKind::kView, {entry.input.folderId, entry.input.userId}, entry.sequence);
  view->sharedWith = entry.sharedWith;
  Assign(*view, entry.input);
  return {std::move(old), std::move(view)};
}

int32_t Seeding::PlaceIn(ObjectKind kind, const Folder& folder, std::optional<int32_t> given) {
  const auto [next, isNew] = m_nextPlaces.try_emplace({kind, folder});
  if (isNew) {
    const auto& [folderId, owner] = folder;
    next->second = kind == ObjectKind::kView ? m_catalog.views.NextSequence(folderId, owner)
                                             : m_catalog.groups.NextSequence(folderId, owner);
  }
  const int32_t place = given.value_or(next->second);
  if (place < std::numeric_limits<int32_t>::max()) next->second = std::max(next->second, place + 1);
  return place;
}

void Seeding::Check(const std::vector<Step>& steps) {
  Catalog after = m_catalog;
  ApplyTo(after, steps);
  CheckContainment(after);
  for (const Step& step : steps) step.newView ? CheckUsers(*step.newView) : CheckOwnerExists(step.newGroup->userId);
}

void Seeding::CheckUsers(const View& view) {
  CheckOwnerExists(view.userId);
  if (view.userId == kNobody && !view.sharedWith.empty()) throw std::runtime_error("seed: a public view is shared");
  for (int32_t user : view.sharedWith) {
    if (user == view.userId || !m_accounts.UserExists(user)) {
      throw std::runtime_error("seed: a view is shared with nobody");
    }
  }
}

void Seeding::CheckOwnerExists(int32_t owner) {
  if (owner != kNobody && !m_accounts.UserExists(owner)) throw std::runtime_error("seed: an owner is no user");
}

}  // namespace server
