// SPDX-License-Identifier: Apache-2.0
// For the platform's own tests, not for hosts.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ResourceStore/Export.h"
#include "ResourceStore/details/ListDocument.h"

namespace ResourceStore::details {

// One downloaded list and the changes merged into it. The reply stays as it came until the first change, which splits
// it into its elements once; a change costs as much as its own elements. One thread at a time.
class RESOURCESTORE_API ResourceList {
 public:
  explicit ResourceList(const ListNames& names) : m_names(names) {}

  // The present list reply, as it came or composed; null while there is none.
  std::shared_ptr<const std::string> Text();
  void Set(std::string reply);
  void Clear();

  // Merges a change document: an element of Method 0 or 1 replaces the one of its ID or is appended, one of Method 2
  // removes it. Elements without an ID or of another Method change nothing. Stored elements carry no "Method", so that
  // a load of the text reads each as present and unchanged. False, and nothing merged, when the text is not a list.
  bool Apply(const std::string& change);

  // How `newer` differs from this list, as change documents; empty texts where nothing does.
  struct Difference {
    std::string present;  // added (Method 0) and changed (Method 1) elements, complete
    std::string removed;  // "ID" and Method 2
  };
  Difference DifferenceTo(ResourceList& newer);

 private:
  struct Element {
    bool present = false;
    std::optional<uint32_t> id;
    std::string text;
  };
  void Split();
  void Append(const ListElement& element);
  void Remove(uint32_t id);
  void Compact();

  ListNames m_names;
  std::shared_ptr<const std::string> m_text;  // null: to be composed from the elements, if m_split
  bool m_split = false;
  std::vector<Element> m_elements;  // in the order of the text
  std::unordered_map<uint32_t, size_t> m_index;
  size_t m_removed = 0;  // elements that are not present any more
};

// Both lists. Any thread; m_mutex guards the lists. Whether they are finished may be asked again and again without a
// pause, so that it takes no lock.
class ResourceTexts {
 public:
  std::string Groups() const;
  std::string Views() const;
  bool IsFinished() const { return m_finished; }

  void Set(std::string groups, std::string views, bool finished);
  void Clear();
  bool ApplyGroups(const std::string& change);
  bool ApplyViews(const std::string& change);
  // Replaces both texts and says what that changed.
  void Replace(std::string groups, std::string views, ResourceList::Difference& groupsDifference,
               ResourceList::Difference& viewsDifference);

 private:
  mutable std::mutex m_mutex;
  mutable ResourceList m_groups{kViewGroupNames};
  mutable ResourceList m_views{kViewNames};
  std::atomic<bool> m_finished{false};
};

}  // namespace ResourceStore::details
