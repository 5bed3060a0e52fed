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

template <class Record>
class Table {
 public:
  using Ptr = std::shared_ptr<const Record>;

  Ptr Find(int32_t id) const;  // null when there is none
  const std::map<int32_t, Ptr>& All() const { return m_records; }
  // What a user may see, by ascending id. Must agree with AudienceOf (permissions/).
  std::vector<Ptr> SeenBy(int32_t userId) const;
  // Ids of what lies directly in one owner's folder, in its order.
  std::vector<int32_t> Content(int32_t folderId, int32_t owner) const;
  // The place after the last one in that folder; the first place is 1.
  int32_t NextSequence(int32_t folderId, int32_t owner) const;

  // Where memory does not suffice, std::bad_alloc is thrown and the same call may be made again; until then the record
  // may be missing from what it was to come into.
  void Put(Ptr record);
  void Remove(int32_t id);

 private:
  using Folder = std::pair<int32_t, int32_t>;            // folder, owner
  using Places = std::set<std::pair<int32_t, int32_t>>;  // sequence, id

  static Folder FolderOf(const Record& record) { return {record.folderId, record.userId}; }
  void Unplace(const Record& record);

  std::map<int32_t, Ptr> m_records;
  std::unordered_map<int32_t, std::map<int32_t, Ptr>> m_ofUser;  // owned, public under kNobody, and shared with
  std::map<Folder, Places> m_places;
};

struct Catalog {
  Table<Group> groups;
  Table<View> views;
};

}  // namespace server
