// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
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
  // An object, and where in it the search for a name begins: names are mostly asked for in their order.
  struct Place {
    const FlatPart* object;  // null for anything else
    const FlatPart* next;
    const FlatPart* found = nullptr;
    // The element of the list that was entered last, the next one's neighbour.
    const FlatPart* list = nullptr;
    const FlatPart* element = nullptr;
    std::uint32_t index = 0;
  };

  void Push(const FlatPart* value);
  const FlatPart* Find(std::string_view key);
  const FlatPart* Element(const FlatPart& list, std::uint32_t index);

  std::vector<Place> m_levels;
  bool m_isUnusual = false;
};

}  // namespace QorviViewPlugin
