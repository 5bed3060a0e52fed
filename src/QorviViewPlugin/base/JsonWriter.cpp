// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/base/JsonWriter.h"

#include <algorithm>

#include "json/PlainText.h"

namespace QorviViewPlugin {
namespace {

char* AppendEscaped(char* to, char c) {
  static constexpr std::string_view kNamed = "\b\f\n\r\t\"\\";
  static constexpr std::string_view kNames = "bfnrt\"\\";
  static constexpr char kHex[] = "0123456789ABCDEF";
  *to++ = '\\';
  if (const size_t named = kNamed.find(c); named != std::string_view::npos) {
    *to++ = kNames[named];
    return to;
  }
  for (const char digit : {'u', '0', '0', kHex[c >> 4], kHex[c & 0xF]}) *to++ = digit;
  return to;
}

}  // namespace

void JsonWriter::String(std::string_view text) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  const char* const plainEnd = json::EndOfPlain(begin, end);
  char* to = Separated(text.size() + 2);
  *to++ = '"';
  to = std::copy(begin, plainEnd, to);
  if (plainEnd != end) to = CopyEscaped(to, plainEnd, end);
  *to++ = '"';
  Close(to, true);
}

char* JsonWriter::CopyEscaped(char* to, const char* at, const char* end) {
  constexpr size_t kLongestEscape = 6;
  const auto escapes = static_cast<size_t>(std::count_if(at, end, [](char c) { return !json::IsPlain(c); }));
  m_size = static_cast<size_t>(to - m_text.data());
  to = Room(static_cast<size_t>(end - at) + escapes * (kLongestEscape - 1) + 1);
  while (at != end) {
    to = AppendEscaped(to, *at++);
    const char* const plainEnd = json::EndOfPlain(at, end);
    to = std::copy(at, plainEnd, to);
    at = plainEnd;
  }
  return to;
}

void JsonWriter::Grow(size_t size) {
  constexpr size_t kSmallest = 256;
  m_text.resize(std::max({kSmallest, 2 * m_text.size(), m_size + size}));
}

}  // namespace QorviViewPlugin
