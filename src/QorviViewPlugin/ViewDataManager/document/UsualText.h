// SPDX-License-Identifier: Apache-2.0
// What stands at a place of a JSON text of the usual kind, without a copy and without a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory_resource>
#include <string>
#include <string_view>

#include "json/PlainText.h"

namespace QorviViewPlugin {

inline const char* SkipBlanks(const char* at) {
  // Most places have none.
  while (*at <= ' ' && (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')) ++at;
  return at;
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

// Its functions read what stands at `at`, where no blank is, look at each of its characters, and answer the place
// behind it. Null where they give up: at what is not JSON, and at what is rare in a list of views: names that hold
// escapes, numbers with an exponent or of more than 18 digits, nesting that is deeper than any view's. One thread at a
// time; the text must outlive this.
class UsualText {
 public:
  explicit UsualText(const std::string& text) : m_begin(text.data()), m_end(m_begin + text.size()) {}
  UsualText(const UsualText&) = delete;
  UsualText& operator=(const UsualText&) = delete;

  const char* Begin() const { return m_begin; }
  const char* End() const { return m_end; }  // where a NUL stands

  // Any value.
  const char* Pass(const char* at, int depth = 0) const;
  // A whole number of 32 bits, and nothing else. `number` stays as it is where this gives up.
  static const char* Int(const char* at, int& number);
  // A text. What has escapes is decoded and holds until ForgetTexts, the rest stays where it is.
  const char* Text(const char* at, std::string_view& text);
  void ForgetTexts() { m_texts.release(); }
  // A member's name and colon. Answers where its value begins.
  const char* Name(const char* at, std::string_view& name) const;
  // The same; null where another name stands.
  const char* Expect(const char* at, std::string_view name) const;

 private:
  const char* PassMembers(const char* at, int depth) const;
  const char* PassElements(const char* at, int depth) const;
  const char* PassText(const char* at) const;
  const char* Escaped(const char* begin, const char* end, std::string_view& text);

  const char* m_begin;
  const char* m_end;
  alignas(std::max_align_t) char m_memory[16 * 1024];
  std::pmr::monotonic_buffer_resource m_texts{m_memory, sizeof m_memory};
};

// What is read of every window stands here, so that a name's length is known to the compiler.

inline const char* UsualText::Expect(const char* at, std::string_view name) const {
  const std::size_t size = name.size();
  if (static_cast<std::size_t>(m_end - at) < size + 3 || *at != '"' || at[size + 1] != '"') return nullptr;
  if (!IsSameName({at + 1, size}, name)) return nullptr;
  if (at[size + 2] == ':') return SkipBlanks(at + size + 3);
  const char* const colon = SkipBlanks(at + size + 2);
  return *colon == ':' ? SkipBlanks(colon + 1) : nullptr;
}

inline const char* UsualText::Text(const char* at, std::string_view& text) {
  if (*at != '"') return nullptr;
  const char* const begin = at + 1;
  const char* const end = json::EndOfPlain(begin, m_end);
  if (*end != '"') return Escaped(begin, end, text);
  text = {begin, end};
  return end + 1;
}

}  // namespace QorviViewPlugin
