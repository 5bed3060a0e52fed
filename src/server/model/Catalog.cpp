// SPDX-License-Identifier: Apache-2.0
#include "server/model/Catalog.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace server {

template <class Record>
auto Table<Record>::Find(int32_t id) const -> Ptr {
  const auto it = m_records.find(id);
  return it == m_records.end() ? nullptr : it->second;
}

template <class Record>
auto Table<Record>::SeenBy(int32_t userId) const -> std::vector<Ptr> {
  static const std::map<int32_t, Ptr> none;
  const auto of = [this](int32_t user) -> const std::map<int32_t, Ptr>& {
    const auto it = m_ofUser.find(user);
    return it == m_ofUser.end() ? none : it->second;
  };
  const auto& everybodys = of(kNobody);
  const auto& own = of(userId);
  std::vector<Ptr> seen;
  seen.reserve(everybodys.size() + own.size());
  for (const auto& [id, record] : everybodys) seen.push_back(record);
  for (const auto& [id, record] : own) seen.push_back(record);
  const auto middle = seen.begin() + static_cast<std::ptrdiff_t>(everybodys.size());
  std::inplace_merge(seen.begin(), middle, seen.end(),
                     [](const Ptr& one, const Ptr& other) { return one->id < other->id; });
  return seen;
}

template <class Record>
std::vector<int32_t> Table<Record>::Content(int32_t folderId, int32_t owner) const {
  std::vector<int32_t> ids;
  const auto it = m_places.find({folderId, owner});
  if (it == m_places.end()) return ids;
  for (const auto& place : it->second) ids.push_back(place.second);
  return ids;
}

template <class Record>
int32_t Table<Record>::NextSequence(int32_t folderId, int32_t owner) const {
  const auto it = m_places.find({folderId, owner});
  if (it == m_places.end() || it->second.empty()) return 1;
  const int32_t last = it->second.rbegin()->first;
  return last == std::numeric_limits<int32_t>::max() ? last : std::max(last + 1, 1);
}

namespace {

// Whether the index has it under that user.
bool IsUnder(int32_t user, const Item& item) {
  return item.userId == user || std::ranges::binary_search(item.sharedWith, user);
}

}  // namespace

template <class Record>
void Table<Record>::Unplace(const Record& record) {
  const auto it = m_places.find(FolderOf(record));
  it->second.erase({record.sequence, record.id});
  if (it->second.empty()) m_places.erase(it);
}

// First what needs memory, then what takes the old away.
template <class Record>
void Table<Record>::Put(Ptr record) {
  const int32_t id = record->id;
  const Ptr old = Find(id);
  m_places[FolderOf(*record)].emplace(record->sequence, id);
  m_ofUser[record->userId].insert_or_assign(id, record);
  for (int32_t user : record->sharedWith) m_ofUser[user].insert_or_assign(id, record);
  m_records.insert_or_assign(id, record);
  if (!old) return;
  if (FolderOf(*old) != FolderOf(*record) || old->sequence != record->sequence) Unplace(*old);
  if (!IsUnder(old->userId, *record)) m_ofUser[old->userId].erase(id);
  for (int32_t user : old->sharedWith) {
    if (!IsUnder(user, *record)) m_ofUser[user].erase(id);
  }
}

template <class Record>
void Table<Record>::Remove(int32_t id) {
  const auto it = m_records.find(id);
  if (it == m_records.end()) return;
  const Record& record = *it->second;
  Unplace(record);
  m_ofUser[record.userId].erase(id);
  for (int32_t user : record.sharedWith) m_ofUser[user].erase(id);
  m_records.erase(it);
}

template class Table<Group>;
template class Table<View>;

}  // namespace server
