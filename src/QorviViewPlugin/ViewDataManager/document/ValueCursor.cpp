// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ValueCursor.h"

namespace QorviViewPlugin {

using Kind = FlatPart::Kind;

void ValueCursor::Push(const FlatPart* value) {
  Place& place = m_levels.emplace_back();
  if (!value || value->kind != Kind::Object) return;
  place.object = value;
  place.marks = value->marks;
  place.next = value + 1;
  place.end = value->Next();
}

const FlatPart* ValueCursor::FindElsewhere(Place& place, std::string_view key) {
  if (place.found && IsSameName(place.found->Name(), key)) return place.found;
  for (const FlatPart* at = place.object + 1; at != place.end; at = at->Next()) {
    if (!IsSameName(at->Name(), key)) continue;
    place.next = at->Next();
    return place.found = at;
  }
  return nullptr;
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

}  // namespace QorviViewPlugin
