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
std::vector<Ptr> SeenBy(const Index& index, int32_t userId) {
  static const typename Index::mapped_type s_none;
  const auto of = [&index](int32_t user) -> const typename Index::mapped_type& {
    const auto it = index.find(user);
    return it == index.end() ? s_none : it->second;
  };
  const auto& everybodys = of(kNobody);
  const auto& own = of(userId);
  std::vector<Ptr> seen;
  seen.reserve(everybodys.size() + own.size());
  for (auto a = everybodys.begin(), b = own.begin(); a != everybodys.end() || b != own.end();) {
    const bool isFirst = b == own.end() || (a != everybodys.end() && a->first < b->first);
    seen.push_back(isFirst ? (a++)->second : (b++)->second);
  }
  return seen;
}

Kind KindOf(const View&) {
  return Kind::kView;
}
Kind KindOf(const Group&) {
  return Kind::kGroup;
}
std::pair<int32_t, int32_t> FolderOf(const View& view) {
  return {view.groupId, view.userId};
}
std::pair<int32_t, int32_t> FolderOf(const Group& group) {
  return {group.parentId, group.userId};
}

template <class Object>
bool IsSamePlace(const Object& a, const Object& b) {
  return FolderOf(a) == FolderOf(b) && a.sequence == b.sequence;
}

const std::vector<int32_t>& SharersOf(const View& view) {
  return view.sharedWith;
}
std::vector<int32_t> SharersOf(const Group&) {
  return {};
}

// Whether the index has it under that user.
bool IsUnder(int32_t user, const View& view) {
  return view.userId == user || std::binary_search(view.sharedWith.begin(), view.sharedWith.end(), user);
}
bool IsUnder(int32_t user, const Group& group) {
  return group.userId == user;
}

}  // namespace

ViewPtr Catalog::FindView(int32_t id) const {
  return Find(m_views, id);
}

GroupPtr Catalog::FindGroup(int32_t id) const {
  return Find(m_groups, id);
}

std::vector<ViewPtr> Catalog::ViewsSeenBy(int32_t userId) const {
  return SeenBy<ViewPtr>(m_viewsOfUser, userId);
}

std::vector<GroupPtr> Catalog::GroupsSeenBy(int32_t userId) const {
  return SeenBy<GroupPtr>(m_groupsOfUser, userId);
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

void Catalog::Unplace(Kind kind, const Folder& folder, int32_t sequence, int32_t id) {
  const auto it = m_places.find({kind, folder});
  it->second.erase({sequence, id});
  if (it->second.empty()) m_places.erase(it);
}

// First what needs memory, then what takes the old away.
template <class Ptr>
void Catalog::PutInto(std::map<int32_t, Ptr>& table, Index<Ptr>& index, Ptr object) {
  const int32_t id = object->id;
  const Ptr old = Find(table, id);
  m_places[{KindOf(*object), FolderOf(*object)}].emplace(object->sequence, id);
  index[object->userId].insert_or_assign(id, object);
  for (int32_t user : SharersOf(*object)) index[user].insert_or_assign(id, object);
  table.insert_or_assign(id, object);
  if (!old) return;
  if (!IsSamePlace(*old, *object)) Unplace(KindOf(*old), FolderOf(*old), old->sequence, id);
  if (!IsUnder(old->userId, *object)) index[old->userId].erase(id);
  for (int32_t user : SharersOf(*old)) {
    if (!IsUnder(user, *object)) index[user].erase(id);
  }
}

template <class Ptr>
void Catalog::RemoveFrom(std::map<int32_t, Ptr>& table, Index<Ptr>& index, int32_t id) {
  const auto it = table.find(id);
  if (it == table.end()) return;
  const auto& object = *it->second;
  Unplace(KindOf(object), FolderOf(object), object.sequence, id);
  index[object.userId].erase(id);
  for (int32_t user : SharersOf(object)) index[user].erase(id);
  table.erase(it);
}

void Catalog::Put(ViewPtr view) {
  PutInto(m_views, m_viewsOfUser, std::move(view));
}

void Catalog::Put(GroupPtr group) {
  PutInto(m_groups, m_groupsOfUser, std::move(group));
}

void Catalog::RemoveView(int32_t id) {
  RemoveFrom(m_views, m_viewsOfUser, id);
}

void Catalog::RemoveGroup(int32_t id) {
  RemoveFrom(m_groups, m_groupsOfUser, id);
}

}  // namespace server
