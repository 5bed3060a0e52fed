// SPDX-License-Identifier: Apache-2.0
// What a server holds and what a client's cache must hold, in plain maps and lists, by the documented rules: a view
// that somebody else modified appears in its group once more, and a removal takes out the first of its appearances.
#pragma once

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
  size_t windows = 0;
  bool shared = false;  // somebody else's
  bool operator==(const ViewRecord&) const = default;
};

// What the server holds.
struct Truth {
  std::map<Id, GroupRecord> groups;
  std::map<Id, ViewRecord> views;
  std::map<Id, std::set<Id>> sharedWith;  // users by view
};

// The cache of a client.
class CacheModel {
 public:
  // What a load makes of it: groups, then views.
  void Load(const std::vector<GroupRecord>& groups, const std::vector<ViewRecord>& views);

  void OwnGroupAdded(const GroupRecord& group);
  void OwnGroupRenamed(Id id, const std::string& name);
  void OwnGroupRemoved(Id id);
  void OwnViewAdded(const ViewRecord& view);
  void OwnViewModified(const ViewRecord& view);
  void OwnViewRemoved(Id id);

  // Change documents.
  void GroupAdded(const GroupRecord& group);
  void GroupModified(const GroupRecord& group);
  void GroupRemoved(Id id) { m_groups.erase(id); }
  void ViewAdded(const ViewRecord& view);
  void ViewModified(const ViewRecord& view);
  void ViewRemoved(Id id) { OwnViewRemoved(id); }  // names the id alone, so that no group gains an appearance

  using Listed = std::tuple<std::string, Id, Id, int>;  // name, id, upper group, type

  std::vector<GroupRecord> Groups() const;
  std::vector<ViewRecord> Views() const;
  bool HasView(Id id) const { return m_views.count(id) > 0; }
  // Sorted.
  std::vector<Listed> ChildGroups(Id parent, int type) const;
  std::vector<Listed> Members(Id group) const;
  std::vector<Listed> WithoutGroup(int type) const;

 private:
  struct Folder {
    GroupRecord record;
    std::list<std::shared_ptr<ViewRecord>> members;
  };

  void RemoveFirstMember(Id group, Id view);
  void Append(Id group, std::shared_ptr<ViewRecord> view);

  std::map<Id, Folder> m_groups;
  std::map<Id, std::shared_ptr<ViewRecord>> m_views;
};
