// SPDX-License-Identifier: Apache-2.0
// For this library and the platform's tests, not for hosts.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ResourceStore/Export.h"
#include "ResourceStore/details/ListDocument.h"

namespace ResourceStore::details {

// One downloaded list and the changes merged into it. The reply stays as it came until the first change, which splits
// it into its elements once; a change costs as much as its own elements. Where the reply says up to which change it is
// complete and its elements say which was their last, the text goes on saying so. One thread at a time.
// Where memory does not suffice, std::bad_alloc is thrown and the same call may be made again: a list is as it was but
// for elements that the change has merged already, and its number is the old one.
class RESOURCESTORE_API ResourceList {
 public:
  explicit ResourceList(const ListNames& names) : m_names(names) {}

  // The present list reply, as it came or composed; null while there is none.
  std::shared_ptr<const std::string> Text();
  // `number`: of the last change that the reply holds.
  void Set(std::string reply, uint64_t number = 0);
  // Of the last change that the list holds.
  uint64_t Number() const { return m_number; }

  // Merges a change document: an element of Method 0 or 1 replaces the one of its ID or is appended, one of Method 2
  // removes it. Elements without an ID or of another Method change nothing. Stored elements carry no "Method", so that
  // a load of the text reads each as present and unchanged. False, and nothing merged, when the text is not a list. The
  // list is complete up to `number` afterwards in either case. `element` becomes the last of the change's elements.
  bool Apply(const std::string& change, uint64_t number, ListElement& element);
  bool Apply(const std::string& change) {
    ListElement element;
    return Apply(change, m_number, element);
  }

  // How `newer` differs from this list, as change documents; empty texts where nothing does.
  struct Difference {
    std::string present;  // added (Method 0) and changed (Method 1) elements, complete
    std::string removed;  // "ID" and Method 2
  };
  // Kept: present elements carry their own number, removed ones the newer list's. A difference in the number alone is
  // none.
  enum class Numbers { Kept, LeftOut };
  Difference DifferenceTo(ResourceList& newer, Numbers numbers = Numbers::Kept);
  // What is now to be said of that object, as a change document: that it is as the list has it (as `method` says, 0
  // added or 1 changed), or that it is gone. Empty where the list does not say numbers.
  std::string StateOf(uint32_t id, int method);
  // A change document that says nothing and has no number.
  std::string Nothing() const;
  // Reads the elements of the reply now and not when they are first needed.
  void Split();

 private:
  struct Element {
    bool present = false;
    std::optional<uint32_t> id;
    uint64_t number = 0;
    std::string text;
  };
  void Append(const ListElement& element);
  void Remove(uint32_t id);
  void Compact();

  ListNames m_names;
  std::shared_ptr<const std::string> m_text;  // null: to be composed from the elements, if m_split
  bool m_split = false;
  bool m_saysNumber = false;  // once split
  uint64_t m_number = 0;
  std::vector<Element> m_elements;  // in the order of the text
  std::unordered_map<uint32_t, size_t> m_index;
  size_t m_removed = 0;  // elements that are not present any more
};

}  // namespace ResourceStore::details
