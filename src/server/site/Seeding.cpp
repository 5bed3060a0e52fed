// SPDX-License-Identifier: Apache-2.0
#include "server/site/Seeding.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <stdexcept>

#include "server/login/Secrets.h"
#include "server/permissions/Rules.h"

namespace server {

bool Seeding::IsSeeded(const std::string& kind, int32_t id) {
  Query query(m_database, "SELECT 1 FROM seeded WHERE kind = ? AND id = ?", kind, id);
  return query.Next();
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
  for (const SeedGroup& entry : m_seed.groups) {
    if (!IsLeftOut(entry)) MarkSeeded("group", entry.id, entry.digest);
  }
  for (const SeedView& entry : m_seed.views) {
    if (!IsLeftOut(entry)) MarkSeeded("view", entry.id, entry.digest);
  }
  return steps;
}

void Seeding::WriteUsers() {
  for (const SeedUser& user : m_seed.users) {
    if (IsSeeded("user", user.id, user.digest)) continue;
    const std::optional<User> namesake = m_accounts.FindUser(user.name);
    if (namesake && namesake->id != user.id) throw std::runtime_error("seed: there is another user " + user.name);
    // Under the other's name the password would stay the one that it is.
    const std::string known = m_accounts.UserName(user.id);
    if (!known.empty() && known != user.name && !IsSeeded("user", user.id)) {
      throw std::runtime_error("seed: user " + std::to_string(user.id) + " is " + known + " here, and not " +
                               user.name + ": it came by no seed");
    }
    const auto hash = m_newPasswords.find(user.id);
    if (hash == m_newPasswords.end()) {
      m_accounts.UpdateUser(user.id, user.name, user.ptz);
    } else {
      m_accounts.AddUser(user.id, user.name, hash->second, user.ptz);
    }
    MarkSeeded("user", user.id, user.digest);
  }
}

// What is damaged in the store stays there as it is.
bool Seeding::IsLeftOut(const SeedGroup& entry) {
  Query query(m_database, "SELECT 1 FROM groups WHERE id = ?", entry.id);
  return query.Next() && !m_catalog.groups.Find(entry.id);
}

bool Seeding::IsLeftOut(const SeedView& entry) {
  Query query(m_database, "SELECT 1 FROM views WHERE id = ?", entry.id);
  return query.Next() && !m_catalog.views.Find(entry.id);
}

std::vector<Step> Seeding::Steps() {
  std::vector<Step> steps;
  const auto add = [this, &steps](const char* kind, const auto& entry) {
    if (IsSeeded(kind, entry.id, entry.digest)) return;
    if (!IsLeftOut(entry)) return steps.push_back(StepOf(entry));
    std::fprintf(stderr, "viewserver: seed: %s %d is damaged in the store and stays as it is\n", kind, entry.id);
  };
  for (const SeedGroup& entry : m_seed.groups) add("group", entry);
  for (const SeedView& entry : m_seed.views) add("view", entry);
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
  for (const Step& step : steps) ApplyTo(after, step);
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
