// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/TextCursor.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace QorviViewPlugin {
namespace {

constexpr std::size_t kLevels = 8;  // more than a view has
constexpr std::size_t kMostMembers = 256;

}  // namespace

TextCursor::TextCursor(UsualText& text) : m_text(text) {
  m_places.reserve(kLevels);
  m_members.reserve(kMostMembers);
}

void TextCursor::Begin(const char* object, Order order) {
  m_text.ForgetTexts();
  m_order = order;
  m_isStopped = m_mayBeInOtherOrder = false;
  m_places.clear();
  m_members.clear();
  Push(object);
}

const char* TextCursor::End() {
  return Leave();
}

void TextCursor::Stop() {
  m_isStopped = true;
  for (Place& place : m_places) place.at = place.value = nullptr;
}

// Of null, an object without members that is nowhere.
void TextCursor::Push(const char* object) {
  Place& place = m_places.emplace_back();
  place.firstMember = m_members.size();
  if (!object || m_isStopped) return;
  if (*object != '{') return Stop();
  const char* const at = SkipBlanks(object + 1);
  if (*at == '}') {
    place.end = at + 1;
  } else {
    place.at = at;
  }
}

// Passes over the members that were not asked for. Answers the place behind the object; null of one that is nowhere.
// It allocates nothing, and so does not fail.
const char* TextCursor::Leave() {
  Place& place = m_places.back();
  if (place.value) Took(m_text.Pass(place.value));
  while (place.at) {
    std::string_view ignoredName;
    if (const char* const value = NextName(place, ignoredName)) Advance(place, m_text.Pass(value));
  }
  const char* const end = m_isStopped ? nullptr : place.end;
  m_members.erase(m_members.begin() + static_cast<std::ptrdiff_t>(place.firstMember), m_members.end());
  m_places.pop_back();
  return end;
}

void TextCursor::Advance(Place& place, const char* end) {
  place.at = nullptr;
  if (!end) return Stop();
  end = SkipBlanks(end);
  if (*end == ',') {
    place.at = SkipBlanks(end + 1);
  } else if (*end == '}') {
    place.end = end + 1;
  } else {
    Stop();
  }
}

// The value that was found has been read; it ends there.
void TextCursor::Took(const char* end) {
  Place& place = m_places.back();
  place.value = nullptr;
  if (!end) {
    Stop();
  } else if (!place.wasPassed) {
    Advance(place, end);
  }
}

TextCursor::Member* TextCursor::FindMember(const Place& place, std::string_view name) {
  const auto first = m_members.begin() + static_cast<std::ptrdiff_t>(place.firstMember);
  const auto found = std::find_if(first, m_members.end(), [name](const Member& m) { return IsSameName(m.name, name); });
  return found == m_members.end() ? nullptr : &*found;
}

// The name of a member that is passed over; answers where its value is, or null where the name may not come. With
// Order::AsAsked all has been asked for by then: it may be no name of those, of which only the marks are known, so that
// few others are taken for one of them.
const char* TextCursor::NextName(Place& place, std::string_view& name) {
  const char* const value = m_text.Name(place.at, name);
  const std::uint8_t mark = value ? json::NameMark(name) : 0;
  const bool isMarked = value && HasMark(place, mark);
  if (m_order == Order::AsAsked) {
    m_mayBeInOtherOrder = isMarked;
    if (value && !isMarked) return value;
  } else if (value && !(isMarked && FindMember(place, name)) && m_members.size() < m_members.capacity()) {
    SetMark(place, mark);
    m_members.push_back({name, value});
    return value;
  }
  Stop();
  return nullptr;
}

const char* TextCursor::FindSlowly(std::string_view key) {
  Place& place = m_places.back();
  if (place.value) {
    if (IsSameName(place.key, key)) return place.value;
    Took(m_text.Pass(place.value));
  }
  return m_order == Order::Any ? FindInAnyOrder(place, key) : Find(key);
}

const char* TextCursor::FindInAnyOrder(Place& place, std::string_view key) {
  if (m_isStopped) return nullptr;
  Member* member = HasMark(place, json::NameMark(key)) ? FindMember(place, key) : nullptr;
  place.wasPassed = member != nullptr;
  while (!member && place.at) {
    std::string_view name;
    const char* const value = NextName(place, name);
    if (!value) return nullptr;
    if (IsSameName(name, key)) {
      member = &m_members.back();
    } else {
      Advance(place, m_text.Pass(value));
    }
  }
  if (!member) return nullptr;
  place.key = key;
  return place.value = std::exchange(member->value, nullptr);
}

int TextCursor::CountValue(const char* value) {
  if (*value == '{') return 1;
  Took(*value == 'n' ? m_text.Pass(value) : nullptr);
  return 0;
}

int TextCursor::TakeNumber(const char* value, int absent) {
  int number = absent;
  Took(m_text.Int(value, number));
  return number;
}

std::string_view TextCursor::TakeText(const char* value) {
  std::string_view text;
  Took(m_text.Text(value, text));
  return text;
}

TextCursor::List::List(TextCursor& cursor, std::string_view key) : m_cursor(cursor), m_mark(json::NameMark(key)) {
  const char* const value = cursor.Find(key);
  if (!value) return;
  m_isSingle = *value == '{';
  if (m_isSingle) {
    m_next = value;
  } else if (*value == '[') {
    const char* const at = SkipBlanks(value + 1);
    if (*at == ']') {
      m_end = at + 1;
    } else {
      m_next = at;
    }
  } else {
    cursor.Took(*value == 'n' ? cursor.m_text.Pass(value) : nullptr);
  }
}

TextCursor::List::~List() {
  if (m_isInElement) m_cursor.Leave();
  if (m_end) m_cursor.Took(m_end);
}

bool TextCursor::List::Next() {
  if (m_isInElement) {
    m_isInElement = false;
    LeaveElement();
  }
  if (!m_next) return false;
  m_cursor.Push(std::exchange(m_next, nullptr));
  return m_isInElement = true;
}

void TextCursor::List::LeaveElement() {
  const char* const end = m_cursor.Leave();
  if (!end || m_isSingle) {
    m_end = end;
    return;
  }
  const char* const at = SkipBlanks(end);
  if (*at == ',') {
    m_next = SkipBlanks(at + 1);
  } else if (*at == ']') {
    m_end = at + 1;
  } else {
    m_cursor.Stop();
  }
}

}  // namespace QorviViewPlugin
