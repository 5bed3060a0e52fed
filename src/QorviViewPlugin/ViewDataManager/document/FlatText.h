// SPDX-License-Identifier: Apache-2.0
// A JSON text of the usual kind as lists of its parts, value by value, without a copy and without a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "json/NameMark.h"

namespace QorviViewPlugin {

// A value within a list of parts: behind it follow those that it holds, in their order. It is small, since a list has
// many.
struct FlatPart {
  enum class Kind : std::uint8_t { Object, Array, Text, Int, Null, Other };

  const FlatPart* Next() const { return this + size; }
  std::string_view Name() const { return {name, nameSize}; }
  std::string_view Text() const { return {text, textSize}; }

  const char* name = nullptr;  // of a member
  const char* text = nullptr;  // of a Text
  std::uint64_t marks = 0;     // of an object's names
  std::uint32_t nameSize = 0;
  std::uint32_t textSize = 0;
  int number = 0;           // of an Int
  std::uint32_t count = 0;  // members of an object, elements of an array
  std::uint32_t size = 1;   // parts of this value, itself included
  Kind kind = Kind::Other;
};

// One of 64 bits for each name: an object whose marks lack a name's does not have that name.
inline std::uint64_t MarkBit(std::string_view name) {
  return std::uint64_t{1} << (json::NameMark(name) & 63);
}

// As ==, without a call: names are short.
inline bool IsSameName(std::string_view a, std::string_view b) {
  const std::size_t size = a.size();
  if (size != b.size()) return false;
  const auto areSame = [&](auto piece, std::size_t at) {
    auto other = piece;
    std::memcpy(&piece, a.data() + at, sizeof piece);
    std::memcpy(&other, b.data() + at, sizeof other);
    return piece == other;
  };
  if (size > 32) return std::memcmp(a.data(), b.data(), size) == 0;
  if (size > 16 && !(areSame(std::uint64_t{0}, 8) && areSame(std::uint64_t{0}, size - 16))) return false;
  if (size >= 8) return areSame(std::uint64_t{0}, 0) && areSame(std::uint64_t{0}, size - 8);
  if (size >= 4) return areSame(std::uint32_t{0}, 0) && areSame(std::uint32_t{0}, size - 4);
  if (size >= 2) return areSame(std::uint16_t{0}, 0) && areSame(std::uint16_t{0}, size - 2);
  return size == 0 || a[0] == b[0];
}

inline const char* SkipBlanks(const char* at) {
  while (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t') ++at;
  return at;
}

// Goes through a text once and looks at each of its characters. Parse gives up at what is not JSON, and at what is rare
// in a list of views: names that an object has twice or that hold escapes, surrogates, numbers with an exponent or of
// more than 18 digits, nesting that is deeper than any view's, and a text of 4 GiB. One thread at a time; the text must
// outlive this.
class FlatText {
 public:
  explicit FlatText(const std::string& text) : m_begin(text.data()), m_at(m_begin), m_end(m_begin + text.size()) {}
  FlatText(const FlatText&) = delete;
  FlatText& operator=(const FlatText&) = delete;

  std::size_t Offset() const { return static_cast<std::size_t>(m_at - m_begin); }
  std::string From(std::size_t begin) const { return {m_begin + begin, m_at}; }
  bool IsAtEnd() { return Skip() == '\0' && m_at == m_end; }

  // The next character that is not blank; NUL at the end.
  char Skip() {
    m_at = SkipBlanks(m_at);
    return *m_at;
  }
  bool Take(char expected) {
    if (Skip() != expected) return false;
    ++m_at;
    return true;
  }

  // The next value; its parts and texts hold until the next call. Null where it gives up.
  const FlatPart* Parse();

 private:
  const char* m_begin;
  const char* m_at;
  const char* m_end;  // where a NUL stands
  std::vector<FlatPart> m_parts;
  // Texts with escapes, of one value.
  alignas(std::max_align_t) char m_memory[16 * 1024];
  std::pmr::monotonic_buffer_resource m_texts{m_memory, sizeof m_memory};
};

}  // namespace QorviViewPlugin
