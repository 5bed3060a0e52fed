// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <rapidjson/document.h>

#include <algorithm>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "json/NameMark.h"

namespace json {

// Looks the members of an object up by name, cheapest in the order in which they stand. A value that is no object, and
// null, have none. `Value` is rapidjson::Value or const rapidjson::Value. One thread at a time. The value must outlive
// the finder; meanwhile members may be appended and their values replaced.
template <class Value>
class MemberFinder {
 public:
  explicit MemberFinder(Value* value) : m_value(value) {}

  Value* Get() const { return m_value; }

  // The value of the first member of that name, or null.
  Value* Find(std::string_view name) {
    if (!m_value || !m_value->IsObject()) return nullptr;
    const auto members = m_value->MemberBegin();
    const std::uint8_t mark = NameMark(name);
    if (m_passedNames[mark]) {
      // No member before the one found farthest bears its name.
      if (NameOf(members[m_next - 1]) == name) return &members[m_next - 1].value;
      for (Position at = 0; at < m_next; ++at) {
        if (NameOf(members[at]) == name) return &members[at].value;
      }
    }
    const Position count = m_value->MemberCount();
    const Position unseen = std::max(m_next, m_seen);
    Position at = unseen;
    if (unseen > m_next && m_seenNames[mark]) at = m_next;
    if (at == count) return nullptr;
    for (; at < count; ++at) {
      if (NameOf(members[at]) != name) continue;
      for (; m_next < at; ++m_next) m_passedNames[NameMark(NameOf(members[m_next]))] = true;
      m_passedNames[mark] = true;
      ++m_next;
      return &members[at].value;
    }
    for (m_seen = unseen; m_seen < count; ++m_seen) m_seenNames[NameMark(NameOf(members[m_seen]))] = true;
    return nullptr;
  }

 private:
  using Position = rapidjson::SizeType;
  // One bit for each mark: a name whose mark is missing is not among the names. The other way round nothing is said,
  // since names share marks.
  using NameSet = std::bitset<256>;

  static std::string_view NameOf(const rapidjson::Value::Member& member) {
    return {member.name.GetString(), member.name.GetStringLength()};
  }

  Value* m_value;
  // Where the next name is expected: behind the member found farthest. The names of those before it are passed.
  Position m_next = 0;
  NameSet m_passedNames;
  // Searches without a match have looked at members up to here. m_seenNames has the names from m_next to here.
  Position m_seen = 0;
  NameSet m_seenNames;
};

}  // namespace json
