// SPDX-License-Identifier: Apache-2.0
#include "CacheModel.h"

#include <algorithm>

namespace {

int TypeOf(Id owner) {
  return owner == kPublic ? 0 : 1;
}

int TypeOf(const ViewRecord& view) {
  return view.shared ? 2 : TypeOf(view.owner);
}

CacheModel::Listed Entry(const ViewRecord& view) {
  return {view.name, view.id, view.group, TypeOf(view)};
}

}  // namespace

void CacheModel::Load(const std::vector<GroupRecord>& groups, const std::vector<ViewRecord>& views) {
  m_groups.clear();
  m_views.clear();
  for (const GroupRecord& group : groups) OwnGroupAdded(group);
  for (const ViewRecord& view : views) OwnViewAdded(view);
}

void CacheModel::OwnGroupAdded(const GroupRecord& group) {
  m_groups.emplace(group.id, Folder{group, {}});
}

void CacheModel::OwnGroupRenamed(Id id, const std::string& name) {
  m_groups.at(id).record.name = name;
}

void CacheModel::OwnGroupRemoved(Id id) {
  m_groups.erase(id);
}

void CacheModel::OwnViewAdded(const ViewRecord& view) {
  const auto object = std::make_shared<ViewRecord>(view);
  m_views.emplace(view.id, object);
  RemoveFirstMember(view.group, view.id);
  Append(view.group, object);
}

void CacheModel::OwnViewModified(const ViewRecord& view) {
  const auto object = m_views.at(view.id);
  if (object->group != view.group) {
    RemoveFirstMember(object->group, view.id);
    RemoveFirstMember(view.group, view.id);
    Append(view.group, object);
  }
  *object = view;
}

void CacheModel::OwnViewRemoved(Id id) {
  const auto entry = m_views.find(id);
  if (entry == m_views.end()) return;
  const Id group = entry->second->group;
  m_views.erase(entry);
  RemoveFirstMember(group, id);
}

void CacheModel::GroupAdded(const GroupRecord& group) {
  m_groups.erase(group.id);
  m_groups.emplace(group.id, Folder{group, {}});
}

void CacheModel::GroupModified(const GroupRecord& group) {
  const auto entry = m_groups.find(group.id);
  if (entry != m_groups.end()) entry->second.record = group;
}

void CacheModel::ViewAdded(const ViewRecord& view) {
  // Read once into the group and, when it is applied, once more in its place.
  Append(view.group, std::make_shared<ViewRecord>(view));
  OwnViewRemoved(view.id);
  OwnViewAdded(view);
}

void CacheModel::ViewModified(const ViewRecord& view) {
  Append(view.group, std::make_shared<ViewRecord>(view));
  const auto entry = m_views.find(view.id);
  if (entry != m_views.end()) *entry->second = view;
}

std::vector<GroupRecord> CacheModel::Groups() const {
  std::vector<GroupRecord> groups;
  for (const auto& [id, group] : m_groups) groups.push_back(group.record);
  return groups;
}

std::vector<ViewRecord> CacheModel::Views() const {
  std::vector<ViewRecord> views;
  for (const auto& [id, view] : m_views) views.push_back(*view);
  return views;
}

std::vector<CacheModel::Listed> CacheModel::ChildGroups(Id parent, int type) const {
  std::vector<Listed> result;
  for (const GroupRecord& group : Groups()) {
    if (group.parent != parent || TypeOf(group.owner) != type) continue;
    result.emplace_back(group.name, group.id, group.parent, type);
  }
  std::sort(result.begin(), result.end());
  return result;
}

std::vector<CacheModel::Listed> CacheModel::Members(Id group) const {
  std::vector<Listed> result;
  for (const auto& view : m_groups.at(group).members) result.push_back(Entry(*view));
  std::sort(result.begin(), result.end());
  return result;
}

std::vector<CacheModel::Listed> CacheModel::WithoutGroup(int type) const {
  std::vector<Listed> result;
  for (const auto& [id, view] : m_views) {
    if (view->group == kNone && TypeOf(*view) == type) result.push_back(Entry(*view));
  }
  std::sort(result.begin(), result.end());
  return result;
}

void CacheModel::RemoveFirstMember(Id group, Id view) {
  const auto entry = m_groups.find(group);
  if (entry == m_groups.end()) return;
  auto& members = entry->second.members;
  const auto member = std::find_if(members.begin(), members.end(), [view](const auto& m) { return m->id == view; });
  if (member != members.end()) members.erase(member);
}

void CacheModel::Append(Id group, std::shared_ptr<ViewRecord> view) {
  const auto entry = m_groups.find(group);
  if (entry != m_groups.end()) entry->second.members.push_back(std::move(view));
}
