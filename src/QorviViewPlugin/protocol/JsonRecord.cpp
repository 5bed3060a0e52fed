// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/protocol/JsonRecord.h"

namespace QorviVideoComm {

bool IJSONStruct::IsSkipped(const char* key) const {
  if (!m_keyFilter || !key || !*key) return false;
  const bool listed = m_keyFilter->keys.count(key) != 0;
  switch (m_keyFilter->mode) {
    case 0:
      return listed;
    case 1:
      return !listed;
    default:
      return false;
  }
}

void IJSONStruct::AddValue(rapidjson::Value& object, const char* key, rapidjson::Value value,
                           Allocator& allocator) const {
  if (IsSkipped(key)) return;
  object.AddMember(rapidjson::StringRef(key), value, allocator);
}

void IJSONStruct::AddInteger(rapidjson::Value& object, const char* key, int value, Allocator& allocator) const {
  AddValue(object, key, rapidjson::Value(value), allocator);
}

void IJSONStruct::AddBoolean(rapidjson::Value& object, const char* key, bool value, Allocator& allocator) const {
  AddValue(object, key, rapidjson::Value(value), allocator);
}

void IJSONStruct::AddText(rapidjson::Value& object, const char* key, const std::string& value,
                          Allocator& allocator) const {
  AddValue(object, key, rapidjson::Value(rapidjson::StringRef(value.c_str())), allocator);
}

const rapidjson::Value* FindKey(const rapidjson::Value& value, const char* key) {
  if (!value.IsObject()) return nullptr;
  const auto member = value.FindMember(key);
  return member == value.MemberEnd() ? nullptr : &member->value;
}

bool ParseJsonRequest(IJSONStruct& record, const std::string& text) {
  if (text.empty() || text == "null") return false;
  rapidjson::Document document;
  // Iterative: the depth of a hostile text must not cost stack.
  document.Parse<rapidjson::kParseDefaultFlags | rapidjson::kParseIterativeFlag>(text.c_str());
  if (document.HasParseError()) return false;
  record.FromJSON(document);
  return true;
}

std::string SerializeJsonResponse(IJSONStruct& record) {
  rapidjson::Document document;
  const rapidjson::Value value = record.ToJSON(document.GetAllocator());
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value.Accept(writer);
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace QorviVideoComm
