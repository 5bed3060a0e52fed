// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/FlatText.h"

#include <cstring>
#include <limits>

#include "json/PlainText.h"

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

using Index = std::uint32_t;  // of a part in the list
constexpr Index kNone = ~Index{0};

// The names of an object that is being read. Elements of a list mostly bear the same names in the same order: as long
// as they do, nothing is looked up, and none can be there twice.
struct Names {
  bool areExpected = false;
  Index next = kNone;  // the member of the element before whose name is expected next
  Index end = kNone;
  std::uint64_t marks = 0;  // once they are not
};

// Appends a value to a list of parts. Its functions read what stands at `at`, where no blank is, and answer where that
// ends; null where they give up.
class PartReader {
 public:
  PartReader(std::vector<FlatPart>& parts, std::pmr::memory_resource& texts, const char* end)
      : m_parts(parts), m_texts(texts), m_end(end) {}

  // `before` is the element before this one in its list.
  const char* Value(const char* at, std::string_view name, Index before, int depth) {
    const Index here = Count();
    FlatPart& part = m_parts.emplace_back();
    part.name = name.data();
    part.nameSize = static_cast<std::uint32_t>(name.size());
    switch (*at) {
      case '"':
        part.kind = FlatPart::Kind::Text;
        return Text(at + 1, part);
      case '{':
        part.kind = FlatPart::Kind::Object;
        return depth < kDeepest ? Object(at + 1, here, before, depth + 1) : nullptr;
      case '[':
        part.kind = FlatPart::Kind::Array;
        return depth < kDeepest ? Array(at + 1, here, depth + 1) : nullptr;
      case 't':
        return Word(at, "true");
      case 'f':
        return Word(at, "false");
      case 'n':
        part.kind = FlatPart::Kind::Null;
        return Word(at, "null");
      default:
        return Number(at, part);
    }
  }

 private:
  const char* Object(const char* at, Index object, Index before, int depth) {
    std::uint32_t count = 0;
    Names names = NamesLike(before);
    at = SkipBlanks(at);
    if (*at != '}') {
      for (;; ++at) {
        at = Member(SkipBlanks(at), object, names, depth);
        if (!at) return nullptr;
        ++count;
        at = SkipBlanks(at);
        if (*at != ',') break;
      }
      if (*at != '}') return nullptr;
    }
    m_parts[object].marks = names.areExpected ? m_parts[before].marks : names.marks;
    Close(object, count);
    return at + 1;
  }

  const char* Member(const char* at, Index object, Names& names, int depth) {
    std::string_view name;
    at = Name(at, object, names, name);
    if (!at) return nullptr;
    at = SkipBlanks(at);
    return *at == ':' ? Value(SkipBlanks(at + 1), name, kNone, depth) : nullptr;
  }

  const char* Array(const char* at, Index array, int depth) {
    std::uint32_t count = 0;
    at = SkipBlanks(at);
    if (*at != ']') {
      for (Index before = kNone;; ++at) {
        const Index element = Count();
        at = Value(SkipBlanks(at), {}, before, depth);
        if (!at) return nullptr;
        ++count;
        before = element;
        at = SkipBlanks(at);
        if (*at != ',') break;
      }
      if (*at != ']') return nullptr;
    }
    Close(array, count);
    return at + 1;
  }

  Index Count() const { return static_cast<Index>(m_parts.size()); }

  void Close(Index value, std::uint32_t count) {
    m_parts[value].count = count;
    m_parts[value].size = Count() - value;
  }

  Names NamesLike(Index before) const {
    if (before == kNone || m_parts[before].kind != FlatPart::Kind::Object) return {};
    return {.areExpected = true, .next = before + 1, .end = before + m_parts[before].size};
  }

  const char* Name(const char* at, Index object, Names& names, std::string_view& name) {
    if (names.areExpected) {
      if (names.next != names.end && IsName(at, m_parts[names.next].Name())) {
        name = m_parts[names.next].Name();
        names.next += m_parts[names.next].size;
        return at + name.size() + 2;
      }
      names.areExpected = false;
      names.marks = MarksOf(object);
    }
    return NewName(at, object, names, name);
  }

  const char* NewName(const char* at, Index object, Names& names, std::string_view& name) {
    if (*at != '"') return nullptr;
    const char* const end = json::EndOfPlain(at + 1, m_end);
    if (*end != '"') return nullptr;
    name = {at + 1, end};
    const std::uint64_t mark = MarkBit(name);
    if ((names.marks & mark) && HasName(object, name)) return nullptr;
    names.marks |= mark;
    return end + 1;
  }

  bool IsName(const char* at, std::string_view name) const {
    return *at == '"' && static_cast<std::size_t>(m_end - at) >= name.size() + 2 && at[name.size() + 1] == '"' &&
           IsSameName({at + 1, name.size()}, name);
  }

  bool HasName(Index object, std::string_view name) const {
    for (Index member = object + 1; member != Count(); member += m_parts[member].size) {
      if (IsSameName(m_parts[member].Name(), name)) return true;
    }
    return false;
  }

  std::uint64_t MarksOf(Index object) const {
    std::uint64_t marks = 0;
    for (Index member = object + 1; member != Count(); member += m_parts[member].size) {
      marks |= MarkBit(m_parts[member].Name());
    }
    return marks;
  }

  static const char* Number(const char* at, FlatPart& part) {
    const bool isNegative = *at == '-';
    if (isNegative) ++at;
    const char* const first = at;
    std::uint64_t digits = 0;
    while (IsDigit(*at)) digits = digits * 10 + static_cast<std::uint64_t>(*at++ - '0');
    if (at == first || at - first > kMostDigits || (*first == '0' && at - first > 1)) return nullptr;
    if (*at == '.') {
      const char* const fraction = ++at;
      while (IsDigit(*at)) ++at;
      return at != fraction && *at != 'e' && *at != 'E' ? at : nullptr;
    }
    if (*at == 'e' || *at == 'E') return nullptr;
    const std::int64_t value = isNegative ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
    if (value != static_cast<int>(value)) return at;
    part.kind = FlatPart::Kind::Int;
    part.number = static_cast<int>(value);
    return at;
  }

  static const char* Word(const char* at, std::string_view word) {
    return std::strncmp(at, word.data(), word.size()) == 0 ? at + word.size() : nullptr;
  }

  const char* Text(const char* begin, FlatPart& part) {
    const char* const end = json::EndOfPlain(begin, m_end);
    if (*end == '\\') return Escaped(begin, end, part);
    part.text = begin;
    part.textSize = static_cast<std::uint32_t>(end - begin);
    return *end == '"' ? end + 1 : nullptr;
  }

  const char* Escaped(const char* begin, const char* end, FlatPart& part) {
    while (*end == '\\') end = end[1] == '\0' ? m_end : json::EndOfPlain(end + 2, m_end);
    if (*end != '"') return nullptr;
    auto* const decoded = static_cast<char*>(m_texts.allocate(static_cast<std::size_t>(end - begin), 1));
    const char* const decodedEnd = Decode(begin, end, decoded);
    if (!decodedEnd) return nullptr;
    part.text = decoded;
    part.textSize = static_cast<std::uint32_t>(decodedEnd - decoded);
    return end + 1;
  }

  static const char* Decode(const char* at, const char* end, char* to) {
    while (at != end) {
      if (*at != '\\') {
        *to++ = *at++;
      } else if (at[1] == 'u') {
        const int code = CodeOf(at + 2);
        if (code < 0 || (code >= 0xD800 && code < 0xE000)) return nullptr;
        to = Append(to, code);
        at += 6;
      } else {
        *to = Unescaped(at[1]);
        if (*to++ == '\0') return nullptr;
        at += 2;
      }
    }
    return to;
  }

  std::vector<FlatPart>& m_parts;
  std::pmr::memory_resource& m_texts;
  const char* m_end;  // of the whole text, where a NUL stands
};

}  // namespace

const FlatPart* FlatText::Parse() {
  m_parts.clear();
  m_texts.release();
  if (m_end - m_begin > std::numeric_limits<std::uint32_t>::max()) return nullptr;
  Skip();
  const char* const end = PartReader(m_parts, m_texts, m_end).Value(m_at, {}, kNone, 0);
  if (!end) return nullptr;
  m_at = end;
  return m_parts.data();
}

}  // namespace QorviViewPlugin
