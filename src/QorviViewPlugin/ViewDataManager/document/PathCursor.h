// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "NetLink/RapidJsonProto.h"

namespace QorviViewPlugin {

// A position in a JSON document. Keys are named from there, without the path that leads to it. The path lives in one
// buffer that grows and shrinks as levels are entered and left, so that building a path costs no allocation. One thread
// at a time; the document must outlive the cursor.
class PathCursor {
 public:
  explicit PathCursor(const NetLink::CRapidJsonProto& document, std::string_view root = "/")
      : m_document(document), m_path(root), m_length(root.size()) {}

  // Leaves the level that it entered when it goes out of scope. Levels are left in the reverse order.
  class Level {
   public:
    Level(const Level&) = delete;
    ~Level() { m_cursor.m_length = m_outerLength; }

   private:
    friend class PathCursor;
    Level(PathCursor& cursor, size_t outerLength) : m_cursor(cursor), m_outerLength(outerLength) {}
    PathCursor& m_cursor;
    size_t m_outerLength;
  };

  // Everything below names keys of the n-th element of the list `key` (n from 1), or of the object `key`.
  [[nodiscard]] Level Enter(std::string_view key, int n);
  [[nodiscard]] Level Enter(std::string_view key);

  // Reads, with the document's rules for values of another kind.
  int Number(std::string_view key, int absent = -1) { return m_document.get_int_v(Full(key), absent); }
  std::string Text(std::string_view key) { return m_document.get_v(Full(key), {}); }
  // For templates that take either cursor. TextCursor answers this without a copy.
  std::string TextInPlace(std::string_view key) { return Text(key); }
  // This member will not be read, which TextCursor likes to know.
  void PassOver(std::string_view) {}
  int Count(std::string_view key) { return m_document.get_cnt(Full(key)); }

 private:
  // The whole path of a key; valid until the next call.
  std::string_view Full(std::string_view key);

  const NetLink::CRapidJsonProto& m_document;
  // The place is the path's first m_length characters; what stands behind them is the key that was read last.
  std::string m_path;
  size_t m_length;
};

// Appends what `read` makes of the elements of the list `key`. It is called with each new entry, the cursor standing at
// its element.
template <class Entry, class Read>
void ReadEach(PathCursor& at, std::string_view key, std::vector<Entry>& entries, const Read& read) {
  const int count = std::max(at.Count(key), 0);
  entries.reserve(entries.size() + static_cast<size_t>(count));
  for (int n = 1; n <= count; ++n) {
    const auto level = at.Enter(key, n);
    read(entries.emplace_back());
  }
}

}  // namespace QorviViewPlugin
