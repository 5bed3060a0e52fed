// SPDX-License-Identifier: Apache-2.0
#include "server/permissions/Rules.h"

#include <algorithm>

#include "server/model/Refusal.h"
#include "server/permissions/Audience.h"

namespace server {

namespace {

// The folder that a group lies in.
int32_t Above(const Catalog& catalog, int32_t groupId) {
  const GroupPtr group = catalog.groups.Find(groupId);
  return group ? group->folderId : kTopFolder;
}

}  // namespace

ViewPtr VisibleView(const Catalog& catalog, int32_t userId, int32_t viewId) {
  ViewPtr view = catalog.views.Find(viewId);
  if (!view || SightOf(*view, userId) == Sight::kNone) throw Refusal::NoSuchView();
  return view;
}

ViewPtr EditableView(const Catalog& catalog, int32_t userId, int32_t viewId) {
  ViewPtr view = VisibleView(catalog, userId, viewId);
  if (view->userId != kNobody && view->userId != userId)
    throw Refusal::NotPermitted("a shared view is its owner's to edit");
  return view;
}

GroupPtr EditableGroup(const Catalog& catalog, int32_t userId, int32_t groupId) {
  GroupPtr group = catalog.groups.Find(groupId);
  if (!group || SightOf(*group, userId) == Sight::kNone) throw Refusal::NoSuchGroup();
  return group;
}

void CheckOwner(int32_t userId, int32_t owner) {
  if (owner != kNobody && owner != userId) throw Refusal::NotPermitted("a new view or group is public or one's own");
}

void CheckFolder(const Catalog& catalog, int32_t userId, int32_t folderId, int32_t owner) {
  if (folderId == kTopFolder) return;
  const GroupPtr folder = EditableGroup(catalog, userId, folderId);
  if (folder->userId != owner) throw Refusal::NotPermitted("a folder's content has the folder's owner");
}

std::set<int32_t> WayToTop(const Catalog& catalog, int32_t folderId) {
  std::set<int32_t> way;
  for (int32_t at = folderId; at != kTopFolder && way.insert(at).second; at = Above(catalog, at)) {
  }
  return way;
}

void CheckName(const std::string& name) {
  size_t codePoints = 0;
  for (size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    if (byte < 0x20 || byte == 0x7F) throw Refusal::BadName();
    // U+0080 to U+009F, the second set of control characters
    if (byte == 0xC2 && i + 1 < name.size() && static_cast<unsigned char>(name[i + 1]) < 0xA0) throw Refusal::BadName();
    if ((byte & 0xC0) != 0x80) ++codePoints;
  }
  if (codePoints < 1 || codePoints > 256) throw Refusal::BadName();
}

Deletion PlanDeletion(const Catalog& catalog, const Group& group) {
  Deletion plan;
  std::vector<int32_t>& groups = plan.groups;
  std::set<int32_t> passed{group.id};
  groups.push_back(group.id);
  for (size_t i = 0; i < groups.size(); ++i) {  // breadth first: the deepest come last
    for (int32_t inside : catalog.groups.Content(groups[i], group.userId)) {
      if (passed.insert(inside).second) groups.push_back(inside);
    }
  }
  std::reverse(groups.begin(), groups.end());
  for (int32_t id : groups) {
    const std::vector<int32_t> inside = catalog.views.Content(id, group.userId);
    plan.views.insert(plan.views.end(), inside.begin(), inside.end());
  }
  return plan;
}

void CheckContainment(const Catalog& catalog) {
  std::set<int32_t> rooted;  // groups whose way to the top is known to end there
  for (const auto& [id, group] : catalog.groups.All()) {
    CheckFolder(catalog, group->userId, group->folderId, group->userId);
    std::vector<int32_t> way;
    for (int32_t at = id; at != kTopFolder && !rooted.contains(at); at = Above(catalog, at)) {
      if (way.size() > catalog.groups.All().size()) throw Refusal::NotPermitted("a group cannot lie in itself");
      way.push_back(at);
    }
    rooted.insert(way.begin(), way.end());
  }
  for (const auto& [id, view] : catalog.views.All()) CheckFolder(catalog, view->userId, view->folderId, view->userId);
}

}  // namespace server
