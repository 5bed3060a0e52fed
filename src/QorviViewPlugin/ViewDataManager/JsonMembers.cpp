// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/JsonMembers.h"

namespace QorviViewPlugin {

using rapidjson::SizeType;
using rapidjson::Value;

namespace {

std::string_view TextOf(const Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

std::uint64_t MarkOf(std::string_view name) {
  if (name.empty()) return 1;
  const auto letter = [](char c) { return static_cast<unsigned int>(static_cast<unsigned char>(c)); };
  return std::uint64_t{1} << ((name.size() * 11 + letter(name.front()) + letter(name.back()) * 5) % 64);
}

}  // namespace

const Value* JsonMembers::Find(std::string_view name) {
  if (!m_object) return nullptr;
  const auto first = m_object->MemberBegin();
  if (m_passed & MarkOf(name)) {
    for (SizeType member = 0; member < m_next; ++member) {
      if (TextOf(first[member].name) == name) return &first[member].value;
    }
  }
  const SizeType count = m_object->MemberCount();
  for (SizeType member = m_next; member < count; ++member) {
    if (TextOf(first[member].name) != name) continue;
    for (; m_next <= member; ++m_next) m_passed |= MarkOf(TextOf(first[m_next].name));
    return &first[member].value;
  }
  return nullptr;
}

}  // namespace QorviViewPlugin
