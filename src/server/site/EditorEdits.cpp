// SPDX-License-Identifier: Apache-2.0
// The edits: check by the rules, say what each object becomes, write.
#include <algorithm>

#include "server/login/Secrets.h"
#include "server/permissions/Rules.h"
#include "server/site/Editor.h"

namespace server {

Added Editor::AddView(const Caller& caller, ViewInput input) {
  auto view = std::make_shared<View>();
  view->guid = MakeGuid();
  view->userId = input.userId;
  Assign(*view, std::move(input));
  CheckOwner(caller.userId, view->userId);
  CheckFolder(m_catalog, caller.userId, view->folderId, view->userId);
  view->sequence = m_catalog.views.NextSequence(view->folderId, view->userId);
  const int64_t number = Write(caller, Step(nullptr, view));
  return {view->id, number};
}

int64_t Editor::ReplaceView(const Caller& caller, int32_t id, ViewInput input) {
  const ViewPtr old = EditableView(m_catalog, caller.userId, id);
  CheckFolder(m_catalog, caller.userId, input.folderId, old->userId);
  auto view = std::make_shared<View>(*old);
  Assign(*view, std::move(input));
  return Write(caller, Step(old, std::move(view)));
}

int64_t Editor::DeleteView(const Caller& caller, int32_t id) {
  return Write(caller, Step(EditableView(m_catalog, caller.userId, id), nullptr));
}

int64_t Editor::MoveViews(const Caller& caller, const MoveInput& move) {
  if (move.folderId != kTopFolder) EditableGroup(m_catalog, caller.userId, move.folderId);
  std::vector<Step> steps;
  for (int32_t id : move.ids) {
    const ViewPtr old = EditableView(m_catalog, caller.userId, id);
    CheckFolder(m_catalog, caller.userId, move.folderId, old->userId);
    auto view = std::make_shared<View>(*old);
    view->folderId = move.folderId;
    view->sequence = static_cast<int32_t>(steps.size()) + 1;
    steps.emplace_back(old, std::move(view));
  }
  return Write(caller, std::move(steps));
}

std::vector<ShareFailure> Editor::ShareView(const Caller& caller, int32_t id, const std::vector<int32_t>& users) {
  const ViewPtr old = VisibleView(m_catalog, caller.userId, id);
  if (old->userId != caller.userId) throw Refusal::NotPermitted("only the owner of a private view may share it");
  std::vector<ShareFailure> failures;
  auto view = std::make_shared<View>(*old);
  for (int32_t user : users) {
    const std::string name = m_accounts.UserName(user);  // empty: there is no such user
    if (user == caller.userId) {
      failures.push_back({user, name, Refusal::NotPermitted("nobody shares a view with themselves")});
    } else if (name.empty()) {
      failures.push_back({user, name, Refusal::NoSuchUser()});
    } else {
      const auto place = std::lower_bound(view->sharedWith.begin(), view->sharedWith.end(), user);
      if (place == view->sharedWith.end() || *place != user) view->sharedWith.insert(place, user);
    }
  }
  if (view->sharedWith != old->sharedWith) {
    Step step(old, std::move(view));
    step.contentChanged = false;
    Write(caller, std::move(step));
  }
  return failures;
}

Added Editor::AddGroup(const Caller& caller, const GroupInput& input) {
  auto group = std::make_shared<Group>();
  group->name = input.name;
  group->folderId = input.folderId;
  group->userId = input.userId;
  group->sharedFolder = input.sharedFolder;
  CheckOwner(caller.userId, group->userId);
  CheckFolder(m_catalog, caller.userId, group->folderId, group->userId);
  group->sequence = m_catalog.groups.NextSequence(group->folderId, group->userId);
  const int64_t number = Write(caller, Step(nullptr, group));
  return {group->id, number};
}

int64_t Editor::ReplaceGroup(const Caller& caller, int32_t id, const GroupInput& input) {
  const GroupPtr old = EditableGroup(m_catalog, caller.userId, id);
  auto group = std::make_shared<Group>(*old);
  group->name = input.name;
  group->sharedFolder = input.sharedFolder;
  return Write(caller, Step(old, std::move(group)));
}

int64_t Editor::DeleteGroup(const Caller& caller, int32_t id) {
  const Deletion plan = PlanDeletion(m_catalog, *EditableGroup(m_catalog, caller.userId, id));
  std::vector<Step> steps;
  for (int32_t view : plan.views) steps.emplace_back(m_catalog.views.Find(view), nullptr);
  for (int32_t group : plan.groups) steps.emplace_back(m_catalog.groups.Find(group), nullptr);
  for (Step& step : steps) step.own = step.oldGroup && step.oldGroup->id == id;
  return Write(caller, std::move(steps));
}

int64_t Editor::MoveGroups(const Caller& caller, const MoveInput& move) {
  if (move.folderId != kTopFolder) EditableGroup(m_catalog, caller.userId, move.folderId);
  const std::set<int32_t> wayToTop = WayToTop(m_catalog, move.folderId);
  std::vector<Step> steps;
  for (int32_t id : move.ids) {
    const GroupPtr old = EditableGroup(m_catalog, caller.userId, id);
    CheckFolder(m_catalog, caller.userId, move.folderId, old->userId);
    if (wayToTop.count(id) != 0) throw Refusal::NotPermitted("a group cannot lie in itself");
    auto group = std::make_shared<Group>(*old);
    group->folderId = move.folderId;
    group->sequence = static_cast<int32_t>(steps.size()) + 1;
    steps.emplace_back(old, std::move(group));
  }
  return Write(caller, std::move(steps));
}

void Editor::SetDefaultView(const Caller& caller, const DefaultView& view) {
  m_resources.SetDefaultView(caller.userId, view);
}

void Editor::Apply(const SeedData& seed, const Seeding::Passwords& newPasswords) {
  Seeding seeding(seed, m_database, m_accounts, m_resources, m_catalog, newPasswords);
  Write({}, seeding.Write());
}

}  // namespace server
