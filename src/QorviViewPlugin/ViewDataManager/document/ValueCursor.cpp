// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ValueCursor.h"

#include <algorithm>
#include <limits>

namespace QorviViewPlugin {

using Kind = FlatPart::Kind;

void ValueCursor::Push(const FlatPart* value) {
  const bool isObject = value && value->kind == Kind::Object;
  m_levels.push_back({isObject ? value : nullptr, isObject ? value + 1 : nullptr});
}

const FlatPart* ValueCursor::Find(std::string_view key) {
  Place& place = m_levels.back();
  if (!place.object) return nullptr;
  const FlatPart* const end = place.object->Next();
  const FlatPart* at = place.next;
  if (at == end || !IsSameName(at->name, key)) {
    if (place.found && IsSameName(place.found->name, key)) return place.found;
    if (!(place.object->marks & MarkBit(key))) return nullptr;
    at = place.object + 1;
    while (at != end && !IsSameName(at->name, key)) at = at->Next();
    if (at == end) return nullptr;
  }
  place.next = at->Next();
  return place.found = at;
}

const FlatPart* ValueCursor::Element(const FlatPart& list, std::uint32_t index) {
  if (index >= list.count) return nullptr;
  Place& place = m_levels.back();
  if (place.list != &list || index < place.index) {
    place.list = &list;
    place.element = &list + 1;
    place.index = 0;
  }
  for (; place.index < index; ++place.index) place.element = place.element->Next();
  return place.element;
}

ValueCursor::Level ValueCursor::Enter(std::string_view key, int n) {
  const FlatPart* value = Find(key);
  if (value && value->kind == Kind::Array) {
    value = Element(*value, static_cast<std::uint32_t>(n - 1));
  } else if (n != 1) {
    value = nullptr;
  }
  Push(value);
  return Level(*this);
}

ValueCursor::Level ValueCursor::Enter(std::string_view key) {
  Push(Find(key));
  return Level(*this);
}

int ValueCursor::Number(std::string_view key, int absent) {
  const FlatPart* const value = Find(key);
  if (!value) return absent;
  if (value->kind == Kind::Int) return value->number;
  m_isUnusual = true;
  return absent;
}

std::string ValueCursor::Text(std::string_view key) {
  return std::string(TextInPlace(key));
}

std::string_view ValueCursor::TextInPlace(std::string_view key) {
  const FlatPart* const value = Find(key);
  if (!value) return {};
  if (value->kind == Kind::Text) return value->text;
  m_isUnusual = true;
  return {};
}

int ValueCursor::Count(std::string_view key) {
  const FlatPart* const value = Find(key);
  if (!value || value->kind == Kind::Null) return 0;
  if (value->kind != Kind::Array) return 1;
  return static_cast<int>(std::min<std::uint32_t>(value->count, std::numeric_limits<int>::max()));
}

}  // namespace QorviViewPlugin
