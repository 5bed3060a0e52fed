// SPDX-License-Identifier: Apache-2.0
#include "server/model/Catalog.h"

#include <algorithm>
#include <limits>

namespace server {

namespace {

template <class Ptr>
Ptr Find(const std::map<int32_t, Ptr>& table, int32_t id) {
  const auto it = table.find(id);
  return it == table.end() ? nullptr : it->second;
}

template <class Ptr, class Index>
std::vector<Ptr> SeenBy(const std::map<int32_t, Ptr>& table, const Index& index, int32_t userId) {
  std::vector<int32_t> ids;
  for (int32_t owner : {kNobody, userId}) {
    const auto it = index.find(owner);
    if (it == index.end()) continue;
    const auto middle = static_cast<std::ptrdiff_t>(ids.size());
    ids.insert(ids.end(), it->second.begin(), it->second.end());
    std::inplace_merge(ids.begin(), ids.begin() + middle, ids.end());
  }
  std::vector<Ptr> seen;
  seen.reserve(ids.size());
  for (int32_t id : ids) seen.push_back(Find(table, id));
  return seen;
}

}  // namespace

ViewPtr Catalog::FindView(int32_t id) const {
  return Find(m_views, id);
}

GroupPtr Catalog::FindGroup(int32_t id) const {
  return Find(m_groups, id);
}

std::vector<ViewPtr> Catalog::ViewsSeenBy(int32_t userId) const {
  return SeenBy(m_views, m_viewsOfUser, userId);
}

std::vector<GroupPtr> Catalog::GroupsSeenBy(int32_t userId) const {
  return SeenBy(m_groups, m_groupsOfUser, userId);
}

std::vector<int32_t> Catalog::Content(Kind kind, int32_t folderId, int32_t owner) const {
  std::vector<int32_t> ids;
  const auto it = m_places.find({kind, {folderId, owner}});
  if (it == m_places.end()) return ids;
  for (const auto& place : it->second) ids.push_back(place.second);
  return ids;
}

int32_t Catalog::NextSequence(Kind kind, int32_t folderId, int32_t owner) const {
  const auto it = m_places.find({kind, {folderId, owner}});
  if (it == m_places.end()) return 1;
  const int32_t last = it->second.rbegin()->first;
  return last == std::numeric_limits<int32_t>::max() ? last : std::max(last + 1, 1);
}

void Catalog::Place(Kind kind, const Folder& folder, int32_t sequence, int32_t id) {
  m_places[{kind, folder}].emplace(sequence, id);
}

void Catalog::Unplace(Kind kind, const Folder& folder, int32_t sequence, int32_t id) {
  const auto it = m_places.find({kind, folder});
  it->second.erase({sequence, id});
  if (it->second.empty()) m_places.erase(it);
}

void Catalog::Put(ViewPtr view) {
  RemoveView(view->id);
  Place(Kind::kView, {view->groupId, view->userId}, view->sequence, view->id);
  m_viewsOfUser[view->userId].insert(view->id);
  for (int32_t user : view->sharedWith) m_viewsOfUser[user].insert(view->id);
  m_views[view->id] = std::move(view);
}

void Catalog::Put(GroupPtr group) {
  RemoveGroup(group->id);
  Place(Kind::kGroup, {group->parentId, group->userId}, group->sequence, group->id);
  m_groupsOfUser[group->userId].insert(group->id);
  m_groups[group->id] = std::move(group);
}

void Catalog::RemoveView(int32_t id) {
  const auto it = m_views.find(id);
  if (it == m_views.end()) return;
  const View& view = *it->second;
  Unplace(Kind::kView, {view.groupId, view.userId}, view.sequence, id);
  m_viewsOfUser[view.userId].erase(id);
  for (int32_t user : view.sharedWith) m_viewsOfUser[user].erase(id);
  m_views.erase(it);
}

void Catalog::RemoveGroup(int32_t id) {
  const auto it = m_groups.find(id);
  if (it == m_groups.end()) return;
  const Group& group = *it->second;
  Unplace(Kind::kGroup, {group.parentId, group.userId}, group.sequence, id);
  m_groupsOfUser[group.userId].erase(id);
  m_groups.erase(it);
}

}  // namespace server
