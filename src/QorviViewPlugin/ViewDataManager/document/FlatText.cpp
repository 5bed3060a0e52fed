// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/FlatText.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <bit>
#include <bitset>
#include <cstring>

namespace QorviViewPlugin {
namespace {

constexpr int kDeepest = 64;
constexpr int kMostDigits = 18;  // fit 64 bits

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsPlain(char c) {
  return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\';
}

// The first character that is none of a text's own: its end, an escape, or what may not stand there. There is one.
const char* EndOfPlain(const char* at, [[maybe_unused]] const char* end) {
#ifdef __SSE2__
  const __m128i quote = _mm_set1_epi8('"'), backslash = _mm_set1_epi8('\\'), control = _mm_set1_epi8(0x1F);
  for (; end - at >= 16; at += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i found = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash)),
                                       _mm_cmpeq_epi8(_mm_min_epu8(bytes, control), bytes));
    if (const int mask = _mm_movemask_epi8(found)) return at + std::countr_zero(static_cast<unsigned int>(mask));
  }
#endif
  while (IsPlain(*at)) ++at;
  return at;
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

char* Append(char* to, int code) {
  const auto byte = [&to](int bits) { *to++ = static_cast<char>(bits); };
  if (code < 0x80) {
    byte(code);
  } else if (code < 0x800) {
    byte(0xC0 | code >> 6);
    byte(0x80 | (code & 0x3F));
  } else {
    byte(0xE0 | code >> 12);
    byte(0x80 | (code >> 6 & 0x3F));
    byte(0x80 | (code & 0x3F));
  }
  return to;
}

// What stands for itself behind a backslash, or for a control character; NUL for anything else.
char Unescaped(char c) {
  constexpr std::string_view kEscapes = "\"\\/bfnrt", kMeanings = "\"\\/\b\f\n\r\t";
  const std::size_t at = c == '\0' ? std::string_view::npos : kEscapes.find(c);
  return at == std::string_view::npos ? '\0' : kMeanings[at];
}

}  // namespace

const FlatPart* FlatText::Parse() {
  m_parts.clear();
  m_texts.release();
  return ParseValue({}, 0) ? m_parts.data() : nullptr;
}

bool FlatText::ParseValue(std::string_view name, int depth) {
  const std::size_t here = m_parts.size();
  FlatPart& part = m_parts.emplace_back();
  part.name = name;
  switch (Skip()) {
    case '"':
      part.kind = FlatPart::Kind::Text;
      return ParseText(part.text);
    case '{':
      part.kind = FlatPart::Kind::Object;
      return depth < kDeepest && ParseObject(here, depth + 1);
    case '[':
      part.kind = FlatPart::Kind::Array;
      return depth < kDeepest && ParseArray(here, depth + 1);
    case 't':
      return ParseWord("true");
    case 'f':
      return ParseWord("false");
    case 'n':
      part.kind = FlatPart::Kind::Null;
      return ParseWord("null");
    default:
      return ParseNumber(part);
  }
}

bool FlatText::ParseObject(std::size_t object, int depth) {
  ++m_at;
  std::uint32_t count = 0;
  std::bitset<256> marks;
  std::uint64_t bits = 0;
  if (!Take('}')) {
    do {
      std::string_view name;
      if (Skip() != '"' || !ParseText(name) || !Take(':')) return false;
      const std::uint8_t mark = json::NameMark(name);
      if (marks[mark] && HasName(object, name)) return false;
      marks[mark] = true;
      bits |= MarkBit(name);
      ++count;
      if (!ParseValue(name, depth)) return false;
    } while (Take(','));
    if (!Take('}')) return false;
  }
  m_parts[object].count = count;
  m_parts[object].marks = bits;
  m_parts[object].size = static_cast<std::uint32_t>(m_parts.size() - object);
  return true;
}

bool FlatText::ParseArray(std::size_t array, int depth) {
  ++m_at;
  std::uint32_t count = 0;
  if (!Take(']')) {
    do {
      ++count;
      if (!ParseValue({}, depth)) return false;
    } while (Take(','));
    if (!Take(']')) return false;
  }
  m_parts[array].count = count;
  m_parts[array].size = static_cast<std::uint32_t>(m_parts.size() - array);
  return true;
}

bool FlatText::HasName(std::size_t object, std::string_view name) const {
  const FlatPart* const end = m_parts.data() + m_parts.size();
  for (const FlatPart* member = &m_parts[object] + 1; member != end; member = member->Next()) {
    if (IsSameName(member->name, name)) return true;
  }
  return false;
}

bool FlatText::ParseNumber(FlatPart& part) {
  const bool isNegative = *m_at == '-';
  if (isNegative) ++m_at;
  const char* const first = m_at;
  std::int64_t value = 0;
  while (IsDigit(*m_at) && m_at - first < kMostDigits) value = value * 10 + (*m_at++ - '0');
  if (m_at == first || IsDigit(*m_at) || (*first == '0' && m_at - first > 1)) return false;
  if (*m_at == '.') {
    const char* const fraction = ++m_at;
    while (IsDigit(*m_at)) ++m_at;
    return m_at != fraction && *m_at != 'e' && *m_at != 'E';
  }
  if (*m_at == 'e' || *m_at == 'E') return false;
  if (isNegative) value = -value;
  if (value != static_cast<int>(value)) return true;
  part.kind = FlatPart::Kind::Int;
  part.number = static_cast<int>(value);
  return true;
}

bool FlatText::ParseWord(std::string_view word) {
  if (std::strncmp(m_at, word.data(), word.size()) != 0) return false;
  m_at += word.size();
  return true;
}

bool FlatText::ParseText(std::string_view& text) {
  const char* const begin = m_at + 1;
  const char* const end = EndOfPlain(begin, m_end);
  m_at = end + 1;
  if (*end != '"') return *end == '\\' && ParseEscaped(begin, text);
  text = {begin, static_cast<std::size_t>(end - begin)};
  return true;
}

bool FlatText::ParseEscaped(const char* begin, std::string_view& text) {
  const char* end = m_at - 1;
  while (*end == '\\') end = end[1] == '\0' ? m_end : EndOfPlain(end + 2, m_end);
  if (*end != '"') return false;
  m_at = end + 1;

  auto* const decoded = static_cast<char*>(m_texts.allocate(static_cast<std::size_t>(end - begin), 1));
  char* to = decoded;
  for (const char* at = begin; at != end;) {
    if (*at != '\\') {
      *to++ = *at++;
    } else if (at[1] == 'u') {
      const int code = CodeOf(at + 2);
      if (code < 0 || (code >= 0xD800 && code < 0xE000)) return false;
      to = Append(to, code);
      at += 6;
    } else {
      *to = Unescaped(at[1]);
      if (*to++ == '\0') return false;
      at += 2;
    }
  }
  text = {decoded, static_cast<std::size_t>(to - decoded)};
  return true;
}

}  // namespace QorviViewPlugin
