// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/document/FlatText.h"

namespace QorviViewPlugin {

// A position in a parsed JSON value: the reads of PathCursor, without paths. It reads only numbers and texts of exactly
// the kind asked for. On any other kind it sets IsUnusual; read the value again with a PathCursor then, because the
// platform's document decides what such values mean. One thread at a time; the value must outlive the cursor.
class ValueCursor {
 public:
  explicit ValueCursor(const FlatPart& value) { Push(&value); }

  // Leaves the level that it entered when it goes out of scope. Levels are left in the reverse order.
  class Level {
   public:
    Level(const Level&) = delete;
    ~Level() { m_cursor.m_levels.pop_back(); }

   private:
    friend class ValueCursor;
    explicit Level(ValueCursor& cursor) : m_cursor(cursor) {}
    ValueCursor& m_cursor;
  };

  // As PathCursor's.
  [[nodiscard]] Level Enter(std::string_view key, int n);
  [[nodiscard]] Level Enter(std::string_view key);
  int Number(std::string_view key, int absent = -1);
  std::string Text(std::string_view key);
  int Count(std::string_view key);
  // The text as it stands in the value, without a copy.
  std::string_view TextInPlace(std::string_view key);

  bool IsUnusual() const { return m_isUnusual; }

 private:
  // An object, and where in it the search for a name begins: names are mostly asked for in their order. Of anything
  // else there are no members.
  struct Place {
    const FlatPart* object = nullptr;
    std::uint64_t marks = 0;
    const FlatPart* next = nullptr;
    const FlatPart* end = nullptr;
    const FlatPart* found = nullptr;
    // The element of the list that was entered last, the next one's neighbour.
    const FlatPart* list = nullptr;
    const FlatPart* element = nullptr;
    std::uint32_t index = 0;
  };

  void Push(const FlatPart* value);
  const FlatPart* Find(std::string_view key);
  const FlatPart* FindElsewhere(Place& place, std::string_view key);
  const FlatPart* Element(const FlatPart& list, std::uint32_t index);

  std::vector<Place> m_levels;
  bool m_isUnusual = false;
};

// What is read of every window stands here, so that a key's length and mark are known to the compiler.

inline const FlatPart* ValueCursor::Find(std::string_view key) {
  Place& place = m_levels.back();
  if (place.next != place.end && IsSameName(place.next->Name(), key)) {
    place.found = place.next;
    place.next = place.next->Next();
    return place.found;
  }
  return place.marks & MarkBit(key) ? FindElsewhere(place, key) : nullptr;
}

inline int ValueCursor::Number(std::string_view key, int absent) {
  const FlatPart* const value = Find(key);
  if (!value) return absent;
  if (value->kind == FlatPart::Kind::Int) return value->number;
  m_isUnusual = true;
  return absent;
}

inline std::string_view ValueCursor::TextInPlace(std::string_view key) {
  const FlatPart* const value = Find(key);
  if (!value) return {};
  if (value->kind == FlatPart::Kind::Text) return value->Text();
  m_isUnusual = true;
  return {};
}

inline std::string ValueCursor::Text(std::string_view key) {
  return std::string(TextInPlace(key));
}

inline int ValueCursor::Count(std::string_view key) {
  const FlatPart* const value = Find(key);
  if (!value || value->kind == FlatPart::Kind::Null) return 0;
  if (value->kind != FlatPart::Kind::Array) return 1;
  return static_cast<int>(std::min<std::uint32_t>(value->count, std::numeric_limits<int>::max()));
}

}  // namespace QorviViewPlugin
