// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/JsonMembers.h"

#include <cstdint>

namespace QorviViewPlugin {

using json::MarkOf;
using rapidjson::SizeType;
using rapidjson::Value;

namespace {

std::string_view TextOf(const Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

}  // namespace

const Value* JsonMembers::Find(std::string_view name) {
  if (!m_object) return nullptr;
  const auto first = m_object->MemberBegin();
  // The one found last: no member before it bears its name.
  if (m_next > 0 && TextOf(first[m_next - 1].name) == name) return &first[m_next - 1].value;
  const std::uint8_t mark = MarkOf(name);
  if (m_passed[mark]) {
    for (SizeType member = 0; member < m_next; ++member) {
      if (TextOf(first[member].name) == name) return &first[member].value;
    }
  }
  const SizeType count = m_object->MemberCount();
  for (SizeType member = m_next; member < count; ++member) {
    if (TextOf(first[member].name) != name) continue;
    for (; m_next < member; ++m_next) m_passed[MarkOf(TextOf(first[m_next].name))] = true;
    m_passed[mark] = true;
    ++m_next;
    return &first[member].value;
  }
  return nullptr;
}

}  // namespace QorviViewPlugin
