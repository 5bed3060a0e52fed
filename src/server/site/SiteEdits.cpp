// SPDX-License-Identifier: Apache-2.0
// The edits of a site: check by the rules, say what each object becomes, commit.
#include <algorithm>
#include <chrono>
#include <new>
#include <thread>

#include "server/login/Secrets.h"
#include "server/permissions/Rules.h"
#include "server/site/Site.h"

namespace server {

Site::Step Site::ViewStep(ViewPtr before, std::shared_ptr<View> after) {
  Step step;
  step.kind = Kind::kView;
  step.oldView = std::move(before);
  step.newView = std::move(after);
  return step;
}

Site::Step Site::GroupStep(GroupPtr before, std::shared_ptr<Group> after) {
  Step step;
  step.kind = Kind::kGroup;
  step.oldGroup = std::move(before);
  step.newGroup = std::move(after);
  return step;
}

Added Site::AddView(const Caller& caller, ViewInput input) {
  auto view = std::make_shared<View>();
  view->guid = MakeGuid();
  view->name = std::move(input.name);
  view->groupId = input.groupId;
  view->userId = input.userId;
  view->autoCycle = input.autoCycle;
  view->cycleTime = input.cycleTime;
  view->document = std::make_shared<std::string>(std::move(input.document));

  Locked locked(m_mutex);
  CheckOwner(caller.userId, view->userId);
  CheckFolder(m_catalog, caller.userId, view->groupId, view->userId);
  view->sequence = m_catalog.NextSequence(Kind::kView, view->groupId, view->userId);
  std::vector<Step> steps{ViewStep(nullptr, view)};
  const int64_t number = Commit(locked, caller, steps);
  return {view->id, number};
}

int64_t Site::ReplaceView(const Caller& caller, int32_t id, ViewInput input) {
  Text document = std::make_shared<std::string>(std::move(input.document));

  Locked locked(m_mutex);
  const ViewPtr old = EditableView(m_catalog, caller.userId, id);
  CheckFolder(m_catalog, caller.userId, input.groupId, old->userId);
  auto view = std::make_shared<View>(*old);
  view->name = std::move(input.name);
  view->groupId = input.groupId;
  view->autoCycle = input.autoCycle;
  view->cycleTime = input.cycleTime;
  view->document = std::move(document);
  view->documentId = 0;
  std::vector<Step> steps{ViewStep(old, std::move(view))};
  return Commit(locked, caller, steps);
}

int64_t Site::DeleteView(const Caller& caller, int32_t id) {
  Locked locked(m_mutex);
  std::vector<Step> steps{ViewStep(EditableView(m_catalog, caller.userId, id), nullptr)};
  return Commit(locked, caller, steps);
}

int64_t Site::MoveViews(const Caller& caller, const MoveInput& move) {
  Locked locked(m_mutex);
  if (move.folderId != kTopFolder) EditableGroup(m_catalog, caller.userId, move.folderId);
  std::vector<Step> steps;
  for (int32_t id : move.ids) {
    const ViewPtr old = EditableView(m_catalog, caller.userId, id);
    CheckFolder(m_catalog, caller.userId, move.folderId, old->userId);
    auto view = std::make_shared<View>(*old);
    view->groupId = move.folderId;
    view->sequence = static_cast<int32_t>(steps.size()) + 1;
    steps.push_back(ViewStep(old, std::move(view)));
  }
  return Commit(locked, caller, steps);
}

std::vector<ShareFailure> Site::ShareView(const Caller& caller, int32_t id, const std::vector<int32_t>& users) {
  Locked locked(m_mutex);
  const ViewPtr old = VisibleView(m_catalog, caller.userId, id);
  if (old->userId != caller.userId) throw NotPermitted("only the owner of a private view may share it");
  std::vector<ShareFailure> failures;
  auto view = std::make_shared<View>(*old);
  for (int32_t user : users) {
    const std::string name = m_accounts.UserName(user);  // empty: there is no such user
    if (user == caller.userId) {
      failures.push_back({user, name, NotPermitted("nobody shares a view with themselves")});
    } else if (name.empty()) {
      failures.push_back({user, name, NoSuchUser()});
    } else {
      const auto place = std::lower_bound(view->sharedWith.begin(), view->sharedWith.end(), user);
      if (place == view->sharedWith.end() || *place != user) view->sharedWith.insert(place, user);
    }
  }
  if (view->sharedWith != old->sharedWith) {
    std::vector<Step> steps{ViewStep(old, std::move(view))};
    steps.front().contentChanged = false;
    Commit(locked, caller, steps);
  }
  return failures;
}

Added Site::AddGroup(const Caller& caller, const GroupInput& input) {
  auto group = std::make_shared<Group>();
  group->name = input.name;
  group->parentId = input.parentId;
  group->userId = input.userId;
  group->sharedFolder = input.sharedFolder;

  Locked locked(m_mutex);
  CheckOwner(caller.userId, group->userId);
  CheckFolder(m_catalog, caller.userId, group->parentId, group->userId);
  group->sequence = m_catalog.NextSequence(Kind::kGroup, group->parentId, group->userId);
  std::vector<Step> steps{GroupStep(nullptr, group)};
  const int64_t number = Commit(locked, caller, steps);
  return {group->id, number};
}

int64_t Site::ReplaceGroup(const Caller& caller, int32_t id, const GroupInput& input) {
  Locked locked(m_mutex);
  const GroupPtr old = EditableGroup(m_catalog, caller.userId, id);
  auto group = std::make_shared<Group>(*old);
  group->name = input.name;
  group->sharedFolder = input.sharedFolder;
  std::vector<Step> steps{GroupStep(old, std::move(group))};
  return Commit(locked, caller, steps);
}

int64_t Site::DeleteGroup(const Caller& caller, int32_t id) {
  Locked locked(m_mutex);
  const Deletion plan = PlanDeletion(m_catalog, *EditableGroup(m_catalog, caller.userId, id));
  std::vector<Step> steps;
  for (int32_t view : plan.views) steps.push_back(ViewStep(m_catalog.FindView(view), nullptr));
  for (int32_t group : plan.groups) steps.push_back(GroupStep(m_catalog.FindGroup(group), nullptr));
  for (Step& step : steps) step.own = step.oldGroup && step.oldGroup->id == id;
  return Commit(locked, caller, steps);
}

int64_t Site::MoveGroups(const Caller& caller, const MoveInput& move) {
  Locked locked(m_mutex);
  if (move.folderId != kTopFolder) EditableGroup(m_catalog, caller.userId, move.folderId);
  const std::set<int32_t> wayToTop = WayToTop(m_catalog, move.folderId);
  std::vector<Step> steps;
  for (int32_t id : move.ids) {
    const GroupPtr old = EditableGroup(m_catalog, caller.userId, id);
    CheckFolder(m_catalog, caller.userId, move.folderId, old->userId);
    if (wayToTop.count(id) != 0) throw NotPermitted("a group cannot lie in itself");
    auto group = std::make_shared<Group>(*old);
    group->parentId = move.folderId;
    group->sequence = static_cast<int32_t>(steps.size()) + 1;
    steps.push_back(GroupStep(old, std::move(group)));
  }
  return Commit(locked, caller, steps);
}

int64_t Site::Commit(Locked& locked, const Caller& caller, std::vector<Step>& steps) {
  Transaction transaction(m_database);
  std::vector<Change> changes;
  Write(caller, steps, changes);
  transaction.Commit();

  ApplyCommitted(steps);
  m_log.Committed(changes);
  m_hub.Publish(changes, locked.wake);
  return m_log.Last();
}

void Site::Write(const Caller& caller, std::vector<Step>& steps, std::vector<Change>& changes) {
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
    changes.push_back(RecordOf(caller, step, number));
  }
  m_log.Append(changes);
}

Change Site::RecordOf(const Caller& caller, const Step& step, int64_t number) {
  Change change;
  change.number = number;
  change.kind = step.kind;
  change.sessionId = step.own ? caller.sessionId : 0;
  change.contentChanged = step.contentChanged;
  if (step.oldView) {
    change.id = step.oldView->id;
    change.before = AudienceOf(*step.oldView);
  }
  if (step.newView) {
    const View& view = *step.newView;
    change.id = view.id;
    change.after = AudienceOf(view);
    change.head = *view.head;
    if (!view.sharedWith.empty()) change.sharedHead = SharedViewHead(view, m_accounts.UserName(view.userId));
    change.documentId = view.documentId;
    change.document = view.document;
  }
  if (step.oldGroup) {
    change.id = step.oldGroup->id;
    change.before = AudienceOf(*step.oldGroup);
  }
  if (step.newGroup) {
    change.id = step.newGroup->id;
    change.after = AudienceOf(*step.newGroup);
    change.head = *step.newGroup->head;
  }
  return change;
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

void Site::ApplyTo(Catalog& catalog, const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    if (step.newView) {
      catalog.Put(step.newView);
    } else if (step.oldView) {
      catalog.RemoveView(step.oldView->id);
    } else if (step.newGroup) {
      catalog.Put(step.newGroup);
    } else {
      catalog.RemoveGroup(step.oldGroup->id);
    }
  }
}

}  // namespace server
