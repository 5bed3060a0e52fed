// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/UsualText.h"

#include <rapidjson/encodings.h>

namespace QorviViewPlugin {
namespace {

constexpr int kDeepest = 64;
constexpr int kMostDigits = 18;  // fit 64 bits

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Of four hexadecimal digits; -1 for anything else.
int CodeOf(const char* digits) {
  int code = 0;
  for (int i = 0; i < 4; ++i) {
    const char c = digits[i];
    const char lower = static_cast<char>(c | 0x20);
    if (!IsDigit(c) && (lower < 'a' || lower > 'f')) return -1;
    code = code * 16 + (IsDigit(c) ? c - '0' : lower - 'a' + 10);
  }
  return code;
}

// Behind "\u": one character, of two such escapes where the first is a surrogate. Null for anything else.
const char* CodePoint(const char* digits, int& code) {
  code = CodeOf(digits);
  const char* const behind = digits + 4;
  if (code < 0xD800 || code >= 0xE000) return code < 0 ? nullptr : behind;
  if (code >= 0xDC00 || behind[0] != '\\' || behind[1] != 'u') return nullptr;
  const int low = CodeOf(behind + 2);
  if (low < 0xDC00 || low >= 0xE000) return nullptr;
  code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
  return behind + 6;
}

// Where RapidJSON's encoder writes to.
struct Bytes {
  using Ch = char;
  void Put(char c) { *to++ = c; }
  char* to;
};

// What stands for itself behind a backslash, or for a control character; NUL for anything else.
char Unescaped(char c) {
  constexpr std::string_view kEscapes = "\"\\/bfnrt", kMeanings = "\"\\/\b\f\n\r\t";
  const std::size_t at = c == '\0' ? std::string_view::npos : kEscapes.find(c);
  return at == std::string_view::npos ? '\0' : kMeanings[at];
}

// An escape, appended to what `to` points at, if anything.
const char* Escape(const char* at, char** to) {
  if (at[1] == 'u') {
    int code = 0;
    at = CodePoint(at + 2, code);
    if (!at || !to) return at;
    Bytes bytes{*to};
    rapidjson::UTF8<>::Encode(bytes, static_cast<unsigned int>(code));
    *to = bytes.to;
    return at;
  }
  const char c = Unescaped(at[1]);
  if (c == '\0') return nullptr;
  if (to) *(*to)++ = c;
  return at + 2;
}

const char* Word(const char* at, std::string_view word) {
  return std::strncmp(at, word.data(), word.size()) == 0 ? at + word.size() : nullptr;
}

// The digits of a whole number, without a sign.
const char* Digits(const char* at, std::uint64_t& value) {
  const char* const first = at;
  std::uint64_t digits = 0;
  while (IsDigit(*at)) digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
  value = digits;
  if (at == first || at - first > kMostDigits || (*first == '0' && at - first > 1)) return nullptr;
  return at;
}

const char* PassNumber(const char* at) {
  std::uint64_t ignored = 0;
  at = Digits(*at == '-' ? at + 1 : at, ignored);
  if (at && *at == '.') {
    const char* const fraction = ++at;
    while (IsDigit(*at)) ++at;
    if (at == fraction) return nullptr;
  }
  return at && *at != 'e' && *at != 'E' ? at : nullptr;
}

}  // namespace

const char* UsualText::Int(const char* at, int& number) {
  const bool isNegative = *at == '-';
  std::uint64_t digits = 0;
  at = Digits(isNegative ? at + 1 : at, digits);
  if (!at || *at == '.' || *at == 'e' || *at == 'E') return nullptr;
  const std::int64_t value = isNegative ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
  if (value != static_cast<int>(value)) return nullptr;
  number = static_cast<int>(value);
  return at;
}

const char* UsualText::Name(const char* at, std::string_view& name) const {
  if (*at != '"') return nullptr;
  const char* const end = json::EndOfPlain(at + 1, m_end);
  if (*end != '"') return nullptr;
  name = {at + 1, end};
  at = SkipBlanks(end + 1);
  return *at == ':' ? SkipBlanks(at + 1) : nullptr;
}

const char* UsualText::Escaped(const char* begin, const char* end, std::string_view& text) {
  const char* const behind = PassText(begin);
  if (!behind) return nullptr;
  auto* const decoded = static_cast<char*>(m_texts.allocate(static_cast<std::size_t>(behind - begin), 1));
  std::memcpy(decoded, begin, static_cast<std::size_t>(end - begin));
  char* to = decoded + (end - begin);
  for (const char* at = end; at != behind - 1;) {
    if (*at == '\\') {
      at = Escape(at, &to);
    } else {
      *to++ = *at++;
    }
  }
  text = {decoded, to};
  return behind;
}

// Behind its first quote.
const char* UsualText::PassText(const char* at) const {
  for (;;) {
    at = json::EndOfPlain(at, m_end);
    if (*at != '\\') return *at == '"' ? at + 1 : nullptr;
    at = Escape(at, nullptr);
    if (!at) return nullptr;
  }
}

const char* UsualText::Pass(const char* at, int depth) const {
  switch (*at) {
    case '"':
      return PassText(at + 1);
    case '{':
      return depth < kDeepest ? PassMembers(SkipBlanks(at + 1), depth + 1) : nullptr;
    case '[':
      return depth < kDeepest ? PassElements(SkipBlanks(at + 1), depth + 1) : nullptr;
    case 't':
      return Word(at, "true");
    case 'f':
      return Word(at, "false");
    case 'n':
      return Word(at, "null");
    default:
      return PassNumber(at);
  }
}

const char* UsualText::PassMembers(const char* at, int depth) const {
  if (*at == '}') return at + 1;
  for (;; at = SkipBlanks(at + 1)) {
    std::string_view name;
    at = Name(at, name);
    if (at) at = Pass(at, depth);
    if (!at) return nullptr;
    at = SkipBlanks(at);
    if (*at != ',') return *at == '}' ? at + 1 : nullptr;
  }
}

const char* UsualText::PassElements(const char* at, int depth) const {
  if (*at == ']') return at + 1;
  for (;; at = SkipBlanks(at + 1)) {
    at = Pass(at, depth);
    if (!at) return nullptr;
    at = SkipBlanks(at);
    if (*at != ',') return *at == ']' ? at + 1 : nullptr;
  }
}

}  // namespace QorviViewPlugin
