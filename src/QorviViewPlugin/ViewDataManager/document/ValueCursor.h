// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <rapidjson/document.h>

#include <string>
#include <string_view>
#include <vector>

#include "json/MemberFinder.h"

namespace QorviViewPlugin {

// A position in a parsed JSON value: the reads of PathCursor, without paths. It reads only numbers and texts of exactly
// the kind asked for. On any other kind it sets IsUnusual; read the value again with a PathCursor then, because the
// platform's document decides what such values mean. One thread at a time; the value must outlive the cursor.
class ValueCursor {
 public:
  explicit ValueCursor(const rapidjson::Value& value) { m_levels.emplace_back(&value); }

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
  const rapidjson::Value* Find(std::string_view key) { return m_levels.back().Find(key); }

  std::vector<json::MemberFinder<const rapidjson::Value>> m_levels;
  bool m_isUnusual = false;
};

}  // namespace QorviViewPlugin
