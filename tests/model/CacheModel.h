// SPDX-License-Identifier: Apache-2.0
// What a server holds and what a client's cache must hold, in plain maps and lists, by the documented rules: a view
// that somebody else modified appears in its group once more, and a removal takes out the first of its appearances.
#pragma once

#include <algorithm>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

using Id = int64_t;
constexpr Id kNone = -1;
constexpr Id kPublic = -1;

struct GroupRecord {
  Id id = kNone;
  Id parent = kNone;
  Id owner = kPublic;
  std::string name;
  bool operator==(const GroupRecord&) const = default;
};

struct ViewRecord {
  Id id = kNone;
  Id group = kNone;
  Id owner = kPublic;
  std::string name;
  int cycleTime = 0;
  uint32_t windows = 0;
  bool shared = false;  // somebody else's
  bool operator==(const ViewRecord&) const = default;
};

// A view as that user sees it.
inline ViewRecord SeenBy(Id user, ViewRecord view) {
  view.shared = view.owner != kPublic && view.owner != user;
  if (view.shared) view.group = kNone;  // the owner's folder is not theirs to see
  return view;
}

// What the server holds.
struct Truth {
  std::map<Id, GroupRecord> groups;
  std::map<Id, ViewRecord> views;
  std::map<Id, std::set<Id>> sharedWith;  // users by view
};

// The cache of a client.
class CacheModel {
 public:
  // What a load makes of it for that user: groups, then views.
  void Load(const Truth& truth, Id user) {
    *this = {};
    for (const auto& [id, group] : truth.groups) {
      if (group.owner == kPublic || group.owner == user) OwnGroupAdded(group);
    }
    for (const auto& [id, view] : truth.views) {
      const ViewRecord seen = SeenBy(user, view);
      const auto sharedWith = truth.sharedWith.find(id);
      const bool isShared = sharedWith != truth.sharedWith.end() && sharedWith->second.count(user) > 0;
      if (!seen.shared || isShared) OwnViewAdded(seen);
    }
  }

  void OwnGroupAdded(const GroupRecord& group) { m_groups.emplace(group.id, Folder{group, {}}); }
  void OwnGroupRenamed(Id id, const std::string& name) { m_groups.at(id).record.name = name; }
  void OwnViewAdded(const ViewRecord& view) {
    const auto object = std::make_shared<ViewRecord>(view);
    m_views.emplace(view.id, object);
    Join(view.group, object);
  }
  void OwnViewModified(const ViewRecord& view) {
    const auto object = m_views.at(view.id);
    if (object->group != view.group) {
      RemoveFirstMember(object->group, view.id);
      Join(view.group, object);
    }
    *object = view;
  }

  // Change documents. One of a removed object names the id alone, so that no group gains an appearance: it does what
  // the user's own edit does.
  void GroupAdded(const GroupRecord& group) { m_groups.insert_or_assign(group.id, Folder{group, {}}); }
  void GroupModified(const GroupRecord& group) {
    const auto entry = m_groups.find(group.id);
    if (entry != m_groups.end()) entry->second.record = group;
  }
  void GroupRemoved(Id id) { m_groups.erase(id); }
  void ViewAdded(const ViewRecord& view) {
    // Read once into the group and, when it is applied, once more in its place.
    Append(view.group, std::make_shared<ViewRecord>(view));
    ViewRemoved(view.id);
    OwnViewAdded(view);
  }
  void ViewModified(const ViewRecord& view) {
    Append(view.group, std::make_shared<ViewRecord>(view));
    const auto entry = m_views.find(view.id);
    if (entry != m_views.end()) *entry->second = view;
  }
  void ViewRemoved(Id id) {
    const auto entry = m_views.find(id);
    if (entry == m_views.end()) return;
    const Id group = entry->second->group;
    m_views.erase(entry);
    RemoveFirstMember(group, id);
  }

  using Listed = std::tuple<std::string, Id, Id, int>;  // name, id, upper group, type
  using List = std::multiset<Listed>;

  std::vector<GroupRecord> Groups() const {
    std::vector<GroupRecord> groups;
    for (const auto& [id, group] : m_groups) groups.push_back(group.record);
    return groups;
  }
  std::vector<ViewRecord> Views() const {
    std::vector<ViewRecord> views;
    for (const auto& [id, view] : m_views) views.push_back(*view);
    return views;
  }
  bool HasView(Id id) const { return m_views.count(id) > 0; }

  List ChildGroups(Id parent, int type) const {
    List result;
    for (const auto& [id, group] : m_groups) {
      if (group.record.parent != parent || TypeOf(group.record.owner) != type) continue;
      result.emplace(group.record.name, id, parent, type);
    }
    return result;
  }
  List Members(Id group) const {
    List result;
    for (const auto& view : m_groups.at(group).members) result.insert(Entry(*view));
    return result;
  }
  List WithoutGroup(int type) const {
    List result;
    for (const auto& [id, view] : m_views) {
      if (view->group == kNone && TypeOf(*view) == type) result.insert(Entry(*view));
    }
    return result;
  }

 private:
  struct Folder {
    GroupRecord record;
    std::list<std::shared_ptr<ViewRecord>> members;
  };

  static int TypeOf(Id owner) { return owner == kPublic ? 0 : 1; }
  static int TypeOf(const ViewRecord& view) { return view.shared ? 2 : TypeOf(view.owner); }
  static Listed Entry(const ViewRecord& view) { return {view.name, view.id, view.group, TypeOf(view)}; }

  void RemoveFirstMember(Id group, Id view) {
    const auto entry = m_groups.find(group);
    if (entry == m_groups.end()) return;
    auto& members = entry->second.members;
    const auto member = std::find_if(members.begin(), members.end(), [view](const auto& m) { return m->id == view; });
    if (member != members.end()) members.erase(member);
  }
  void Append(Id group, const std::shared_ptr<ViewRecord>& view) {
    const auto entry = m_groups.find(group);
    if (entry != m_groups.end()) entry->second.members.push_back(view);
  }
  // As the last of the group's members, instead of the first of that id.
  void Join(Id group, const std::shared_ptr<ViewRecord>& view) {
    RemoveFirstMember(group, view->id);
    Append(group, view);
  }

  std::map<Id, Folder> m_groups;
  std::map<Id, std::shared_ptr<ViewRecord>> m_views;
};
