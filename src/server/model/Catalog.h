// SPDX-License-Identifier: Apache-2.0
// All views and groups in memory, indexed by owner, by those they are shared with and by folder. Not thread-safe: its
// owner locks; the records handed out are immutable and may be kept after the lock is released.
#pragma once

#include <map>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "server/model/Model.h"

namespace server {

class Catalog {
 public:
  ViewPtr FindView(int32_t id) const;    // null when there is none
  GroupPtr FindGroup(int32_t id) const;  // null when there is none
  const std::map<int32_t, GroupPtr>& Groups() const { return m_groups; }
  const std::map<int32_t, ViewPtr>& Views() const { return m_views; }

  // What a user may see, by ascending id. Must agree with AudienceOf (permissions/).
  std::vector<ViewPtr> ViewsSeenBy(int32_t userId) const;
  std::vector<GroupPtr> GroupsSeenBy(int32_t userId) const;

  // Ids of what lies directly in one owner's folder, in its order.
  std::vector<int32_t> Content(Kind kind, int32_t folderId, int32_t owner) const;
  // The place after the last one in that folder; the first place is 1.
  int32_t NextSequence(Kind kind, int32_t folderId, int32_t owner) const;

  // Where memory does not suffice, std::bad_alloc is thrown and the same call may be made again; until then the object
  // may be missing from what it was to come into.
  void Put(ViewPtr view);
  void Put(GroupPtr group);
  void RemoveView(int32_t id);
  void RemoveGroup(int32_t id);

 private:
  using Folder = std::pair<int32_t, int32_t>;            // folder, owner
  using Places = std::set<std::pair<int32_t, int32_t>>;  // sequence, id
  // What a user sees and not everybody; what everybody sees under kNobody.
  template <class Ptr>
  using Index = std::unordered_map<int32_t, std::map<int32_t, Ptr>>;

  void Unplace(Kind kind, const Folder& folder, int32_t sequence, int32_t id);
  template <class Ptr>
  void PutInto(std::map<int32_t, Ptr>& table, Index<Ptr>& index, Ptr object);
  template <class Ptr>
  void RemoveFrom(std::map<int32_t, Ptr>& table, Index<Ptr>& index, int32_t id);

  std::map<int32_t, ViewPtr> m_views;
  std::map<int32_t, GroupPtr> m_groups;
  Index<ViewPtr> m_viewsOfUser;
  Index<GroupPtr> m_groupsOfUser;
  std::map<std::pair<Kind, Folder>, Places> m_places;
};

}  // namespace server
