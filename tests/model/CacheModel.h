// SPDX-License-Identifier: Apache-2.0
// What a server holds and what a client's cache must hold, in plain maps and lists, by the documented rules: a view
// that somebody else modified appears in its group once more, and a removal takes out the first of its appearances.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
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
};

struct ViewRecord {
  Id id = kNone;
  Id group = kNone;
  Id owner = kPublic;
  std::string name;
  int cycleTime = 0;
  size_t windows = 0;
};

// What the server holds.
struct Truth {
  std::map<Id, GroupRecord> groups;
  std::map<Id, ViewRecord> views;

  // The groups below `group`, deepest first, itself last.
  std::vector<Id> WithDescendants(Id group) const;
};

// The cache of a client of one user.
class CacheModel {
 public:
  explicit CacheModel(Id user) : m_user(user) {}

  bool Sees(Id owner) const { return owner == kPublic || owner == m_user; }

  void OwnGroupAdded(const GroupRecord& group);
  void OwnGroupRenamed(Id id, const std::string& name);
  void OwnGroupRemoved(Id id);
  void OwnViewAdded(const ViewRecord& view);
  void OwnViewModified(const ViewRecord& view);
  void OwnViewRemoved(Id id);

  // Change documents; what the user may not see is not sent.
  void GroupAdded(const GroupRecord& group);
  void GroupModified(const GroupRecord& group);
  void GroupRemoved(const GroupRecord& group);
  void ViewAdded(const ViewRecord& view);
  void ViewModified(const ViewRecord& view);
  void ViewRemoved(const ViewRecord& view);

  using Listed = std::tuple<std::string, Id, Id, int>;  // name, id, group, type

  std::vector<Id> GroupIds() const;
  std::vector<Id> ViewIds() const;
  const ViewRecord& View(Id id) const { return *m_views.at(id); }
  // Sorted.
  std::vector<std::tuple<std::string, Id>> ChildGroups(Id parent, Id owner) const;
  std::vector<Listed> Members(Id group) const;
  std::vector<Listed> WithoutGroup(int type) const;

 private:
  struct Group {
    GroupRecord record;
    std::list<std::shared_ptr<ViewRecord>> members;
  };

  void RemoveFirstMember(Id group, Id view);
  void Append(Id group, std::shared_ptr<ViewRecord> view);

  Id m_user;
  std::map<Id, Group> m_groups;
  std::map<Id, std::shared_ptr<ViewRecord>> m_views;
};
