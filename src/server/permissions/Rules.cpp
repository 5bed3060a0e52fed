// SPDX-License-Identifier: Apache-2.0
#include "server/permissions/Rules.h"

#include <algorithm>

#include "server/model/Refusal.h"
#include "server/permissions/Audience.h"

namespace server {

ViewPtr VisibleView(const Catalog& catalog, int32_t userId, int32_t viewId) {
  ViewPtr view = catalog.FindView(viewId);
  if (!view || SightOf(*view, userId) == Sight::kNone) throw NoSuchView();
  return view;
}

ViewPtr EditableView(const Catalog& catalog, int32_t userId, int32_t viewId) {
  ViewPtr view = VisibleView(catalog, userId, viewId);
  if (view->userId != kNobody && view->userId != userId) throw NotPermitted("a shared view is its owner's to edit");
  return view;
}

GroupPtr EditableGroup(const Catalog& catalog, int32_t userId, int32_t groupId) {
  GroupPtr group = catalog.FindGroup(groupId);
  if (!group || AudienceOf(*group).Of(userId) == Sight::kNone) throw NoSuchGroup();
  return group;
}

void CheckOwner(int32_t userId, int32_t owner) {
  if (owner != kNobody && owner != userId) throw NotPermitted("a new view or group is public or one's own");
}

void CheckFolder(const Catalog& catalog, int32_t userId, int32_t folderId, int32_t owner) {
  if (folderId == kTopFolder) return;
  const GroupPtr folder = EditableGroup(catalog, userId, folderId);
  if (folder->userId != owner) throw NotPermitted("a folder's content has the folder's owner");
}

std::set<int32_t> WayToTop(const Catalog& catalog, int32_t folderId) {
  std::set<int32_t> way;
  for (int32_t at = folderId; at != kTopFolder;) {
    way.insert(at);
    const GroupPtr group = catalog.FindGroup(at);
    at = group ? group->parentId : kTopFolder;
  }
  return way;
}

void CheckName(const std::string& name) {
  size_t codePoints = 0;
  for (size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    if (byte < 0x20 || byte == 0x7F) throw BadName();
    // U+0080 to U+009F, the second set of control characters
    if (byte == 0xC2 && i + 1 < name.size() && static_cast<unsigned char>(name[i + 1]) < 0xA0) throw BadName();
    if ((byte & 0xC0) != 0x80) ++codePoints;
  }
  if (codePoints < 1 || codePoints > 256) throw BadName();
}

Deletion PlanDeletion(const Catalog& catalog, const Group& group) {
  Deletion plan;
  std::vector<int32_t>& groups = plan.groups;
  groups.push_back(group.id);
  for (size_t i = 0; i < groups.size(); ++i) {  // breadth first: the deepest come last
    const std::vector<int32_t> inside = catalog.Content(Kind::kGroup, groups[i], group.userId);
    groups.insert(groups.end(), inside.begin(), inside.end());
  }
  std::reverse(groups.begin(), groups.end());
  for (int32_t id : groups) {
    const std::vector<int32_t> inside = catalog.Content(Kind::kView, id, group.userId);
    plan.views.insert(plan.views.end(), inside.begin(), inside.end());
  }
  return plan;
}

void CheckContainment(const Catalog& catalog) {
  std::set<int32_t> rooted;  // groups whose way to the top is known to end there
  for (const auto& [id, group] : catalog.Groups()) {
    CheckFolder(catalog, group->userId, group->parentId, group->userId);
    std::vector<int32_t> way;
    for (int32_t at = id; at != kTopFolder && rooted.count(at) == 0;) {
      if (way.size() > catalog.Groups().size()) throw NotPermitted("a group cannot lie in itself");
      way.push_back(at);
      const GroupPtr above = catalog.FindGroup(at);
      at = above ? above->parentId : kTopFolder;
    }
    rooted.insert(way.begin(), way.end());
  }
  for (const auto& [id, view] : catalog.Views()) CheckFolder(catalog, view->userId, view->groupId, view->userId);
}

}  // namespace server
