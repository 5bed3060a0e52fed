// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"

namespace QorviViewPlugin {

// Decides which of two statements about an object is newer. The higher change number wins, whichever came first.
// Answers to the user's own edits, change documents and lists come in any order, from any thread, once or twice; for
// each object the cache is to hold the newest of what was said about it. The rule: what is not newer than what is known
// of that id, or than the list that was loaded, changes nothing and tells nothing. What has no number is not subject to
// the rule.
//
// Only what the loaded list does not cover is remembered: an entry for each object that was changed since, for the last
// ones that were removed, the records that came before their object, and the user's own renamings.
//
// Each serves one kind of object, views or groups, whose record is Info. Not thread-safe: the owner's lock is held from
// the question until the cache has been changed and the change noted.
template <class Info>
class ChangeOrder {
 public:
  // Whether a statement of that number would be news about the object.
  bool IsNews(unsigned int id, ChangeNumber number) const { return number > NumberOf(id); }
  bool IsRenameNews(unsigned int id, ChangeNumber number) const {
    const auto rename = m_renames.find(id);
    return IsNews(id, number) && (rename == m_renames.end() || number > rename->second.number);
  }
  // Of the last change that is known of the object, its removal included; at least that of the loaded list.
  ChangeNumber NumberOf(unsigned int id) const {
    const auto known = m_known.find(id);
    return known == m_known.end() ? m_loaded : std::max(m_loaded, known->second.number);
  }
  // Whether nothing is known that could contradict a list.
  bool IsBlank() const { return m_loaded == 0 && m_known.empty() && m_waiting.empty() && m_renames.empty(); }

  // The newest record of an object that is about to be cached: `info`, or the record that waits for it, with the name
  // that the user has given it since.
  Info Newest(const Info& info, unsigned int id) const {
    Info newest = HasNewerWaiting(id, info.nChangeNumber) ? m_waiting.at(id) : info;
    const auto rename = m_renames.find(id);
    if (rename != m_renames.end() && rename->second.number > newest.nChangeNumber) newest.strName = rename->second.name;
    return newest;
  }

  // Whether a record of that number comes too late to count, because the one that waits is as new or newer.
  bool HasNewerWaiting(unsigned int id, ChangeNumber number) const {
    const auto waiting = m_waiting.find(id);
    return waiting != m_waiting.end() && waiting->second.nChangeNumber >= number;
  }

  // Makes room for a note about that id, so that noting cannot fail once the cache has been changed.
  void Reserve(unsigned int id) {
    if (m_removed >= 2 * kRemovalsKeptAfterTrim) ForgetOldRemovals();
    m_known.try_emplace(id);
  }
  // Both: REQUIRES Reserve(id) before.
  void NoteCached(unsigned int id, ChangeNumber number) {
    Note(id, {number, false});
    m_waiting.erase(id);
    const auto rename = m_renames.find(id);
    if (rename != m_renames.end() && rename->second.number <= number) m_renames.erase(rename);
  }
  void NoteRemoved(unsigned int id, ChangeNumber number) {
    Note(id, {number, true});
    m_waiting.erase(id);
    m_renames.erase(id);
  }

  // Keeps a record of an object that is not cached, until the object comes.
  void Keep(unsigned int id, Info info) {
    if (HasNewerWaiting(id, info.nChangeNumber)) return;
    m_waiting[id] = std::move(info);
    DropOldest(m_waiting, kKeptRecords, [](const Info& kept) { return kept.nChangeNumber; });
  }
  // The user's own renaming says nothing of the rest of the record: older statements still count for that.
  void NoteRename(unsigned int id, ChangeNumber number, std::string name) {
    m_renames[id] = {number, std::move(name)};
    DropOldest(m_renames, kRememberedRenames, [](const Rename& rename) { return rename.number; });
  }

  // A list that is complete up to that number has been loaded. 0 stands for a list without a number: nothing is known
  // from there on.
  void StartFrom(ChangeNumber number) {
    if (number == 0) return Forget();
    m_loaded = std::max(m_loaded, number);
    std::erase_if(m_known, [&](const auto& entry) { return entry.second.number <= m_loaded; });
    m_removed = static_cast<size_t>(
        std::count_if(m_known.begin(), m_known.end(), [](const auto& entry) { return entry.second.isRemoved; }));
    std::erase_if(m_waiting, [&](const auto& entry) { return entry.second.nChangeNumber <= m_loaded; });
    std::erase_if(m_renames, [&](const auto& entry) { return entry.second.number <= m_loaded; });
  }
  void Forget() {
    m_loaded = 0;
    m_known.clear();
    m_removed = 0;
    m_waiting.clear();
    m_renames.clear();
  }

 private:
  static constexpr size_t kRemovalsKeptAfterTrim = 16384;  // at twice as many the older half goes
  static constexpr size_t kKeptRecords = 64;
  static constexpr size_t kRememberedRenames = 4096;

  struct Known {
    ChangeNumber number = 0;
    bool isRemoved = false;
  };
  struct Rename {
    ChangeNumber number = 0;
    std::string name;
  };

  void Note(unsigned int id, Known known) {
    Known& entry = m_known.at(id);
    m_removed += known.isRemoved;
    m_removed -= entry.isRemoved;
    entry = known;
  }
  void ForgetOldRemovals() {
    std::vector<ChangeNumber> numbers;
    numbers.reserve(m_removed);
    for (const auto& [id, known] : m_known) {
      if (known.isRemoved) numbers.push_back(known.number);
    }
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    m_removed -= std::erase_if(
        m_known, [&](const auto& entry) { return entry.second.isRemoved && entry.second.number <= *middle; });
  }
  template <class Table, class NumberOfEntry>
  static void DropOldest(Table& table, size_t limit, NumberOfEntry numberOf) {
    if (table.size() <= limit) return;
    table.erase(std::min_element(table.begin(), table.end(), [&](const auto& one, const auto& other) {
      return numberOf(one.second) < numberOf(other.second);
    }));
  }

  ChangeNumber m_loaded = 0;
  std::unordered_map<unsigned int, Known> m_known;
  size_t m_removed = 0;  // entries of m_known
  std::map<unsigned int, Info> m_waiting;
  std::map<unsigned int, Rename> m_renames;
};

}  // namespace QorviViewPlugin
