// SPDX-License-Identifier: Apache-2.0
#include "server/model/Catalog.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace server {

template <class Record>
auto Table<Record>::Find(int32_t id) const -> Ptr {
  const auto it = m_records.find(id);
  return it == m_records.end() ? nullptr : it->second;
}

template <class Record>
auto Table<Record>::SeenBy(int32_t userId) const -> std::vector<Ptr> {
  static const std::set<int32_t> none;
  const auto idsOf = [this](int32_t user) -> const std::set<int32_t>& {
    const auto it = m_ofUser.find(user);
    return it == m_ofUser.end() ? none : it->second;
  };
  std::vector<int32_t> ids;
  std::ranges::merge(idsOf(kNobody), idsOf(userId), std::back_inserter(ids));
  std::vector<Ptr> seen;
  seen.reserve(ids.size());
  for (int32_t id : ids) seen.push_back(Find(id));
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
  if (it == m_places.end()) return 1;
  const int32_t last = it->second.rbegin()->first;
  return last == std::numeric_limits<int32_t>::max() ? last : std::max(last + 1, 1);
}

template <class Record>
void Table<Record>::Put(Ptr record) {
  Remove(record->id);
  m_places[{record->folderId, record->userId}].emplace(record->sequence, record->id);
  m_ofUser[record->userId].insert(record->id);
  for (int32_t user : record->sharedWith) m_ofUser[user].insert(record->id);
  m_records[record->id] = std::move(record);
}

template <class Record>
void Table<Record>::Remove(int32_t id) {
  const auto it = m_records.find(id);
  if (it == m_records.end()) return;
  const Record& record = *it->second;
  const auto places = m_places.find({record.folderId, record.userId});
  places->second.erase({record.sequence, id});
  if (places->second.empty()) m_places.erase(places);
  m_ofUser[record.userId].erase(id);
  for (int32_t user : record.sharedWith) m_ofUser[user].erase(id);
  m_records.erase(it);
}

template class Table<Group>;
template class Table<View>;

}  // namespace server
