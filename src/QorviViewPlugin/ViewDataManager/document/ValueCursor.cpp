// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ValueCursor.h"

#include <algorithm>
#include <limits>

namespace QorviViewPlugin {

using rapidjson::SizeType;
using rapidjson::Value;

ValueCursor::Level ValueCursor::Enter(std::string_view key, int n) {
  const Value* value = Find(key);
  if (value && value->IsArray()) {
    const auto index = static_cast<SizeType>(n - 1);
    value = index < value->Size() ? &(*value)[index] : nullptr;
  } else if (n != 1) {
    value = nullptr;
  }
  m_levels.emplace_back(value);
  return Level(*this);
}

ValueCursor::Level ValueCursor::Enter(std::string_view key) {
  m_levels.emplace_back(Find(key));
  return Level(*this);
}

int ValueCursor::Number(std::string_view key, int absent) {
  const Value* const value = Find(key);
  if (!value) return absent;
  if (value->IsInt()) return value->GetInt();
  m_isUnusual = true;
  return absent;
}

std::string ValueCursor::Text(std::string_view key) {
  return std::string(TextInPlace(key));
}

std::string_view ValueCursor::TextInPlace(std::string_view key) {
  const Value* const value = Find(key);
  if (!value) return {};
  if (value->IsString()) return {value->GetString(), value->GetStringLength()};
  m_isUnusual = true;
  return {};
}

int ValueCursor::Count(std::string_view key) {
  const Value* const value = Find(key);
  if (!value || value->IsNull()) return 0;
  if (!value->IsArray()) return 1;
  return static_cast<int>(std::min<SizeType>(value->Size(), std::numeric_limits<int>::max()));
}

}  // namespace QorviViewPlugin
