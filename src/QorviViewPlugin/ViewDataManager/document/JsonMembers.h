// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <rapidjson/document.h>

#include <string_view>

#include "json/NameMarks.h"

namespace QorviViewPlugin {

// The members of an object, looked up by name: cheapest in the order in which they stand. A value that is no object,
// and null, have none. One thread at a time; the value must outlive it and stay as it is.
class JsonMembers {
 public:
  explicit JsonMembers(const rapidjson::Value* value) : m_object(value && value->IsObject() ? value : nullptr) {}

  // The value of the first member of that name, or null.
  const rapidjson::Value* Find(std::string_view name);

 private:
  const rapidjson::Value* m_object;
  // The members before m_next have been passed, and m_passed holds the marks of their names.
  rapidjson::SizeType m_next = 0;
  json::NameMarks m_passed;
};

}  // namespace QorviViewPlugin
