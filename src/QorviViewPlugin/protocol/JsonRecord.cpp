// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/protocol/JsonRecord.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "json/ParseText.h"

namespace QorviVideoComm {
namespace {

rapidjson::Value::StringRefType KeyRef(const char* key) {
  return rapidjson::StringRef(key ? key : "");
}

}  // namespace

void IJSONStruct::ReadInteger(Members& members, const char* key, Integer& field) {
  const Value* found = members.Find(key);
  if (!found || !found->IsInt()) return;
  field = found->GetInt();
  NoteRead(key);
}

void IJSONStruct::ReadBoolean(Members& members, const char* key, Boolean& field) {
  const Value* found = members.Find(key);
  if (!found || !found->IsBool()) return;
  field = found->GetBool();
  NoteRead(key);
}

void IJSONStruct::ReadText(Members& members, const char* key, Text& field) {
  const Value* found = members.Find(key);
  if (!found || !found->IsString()) return;
  field = found->GetString();
  NoteRead(key);
}

bool IJSONStruct::IsLeftOut(const char* key) const {
  if (!m_keyFilter || !key || !*key) return false;
  const bool listed = m_keyFilter->keys.contains(key);
  return (m_keyFilter->mode == 0 && listed) || (m_keyFilter->mode == 1 && !listed);
}

void IJSONStruct::AddInteger(Value& object, const char* key, Integer value, Allocator& allocator) const {
  if (!IsLeftOut(key)) object.AddMember(KeyRef(key), value, allocator);
}

void IJSONStruct::AddBoolean(Value& object, const char* key, Boolean value, Allocator& allocator) const {
  if (!IsLeftOut(key)) object.AddMember(KeyRef(key), value, allocator);
}

void IJSONStruct::AddText(Value& object, const char* key, const Text& value, Allocator& allocator) const {
  if (!IsLeftOut(key)) object.AddMember(KeyRef(key), Value(WrittenText(value)), allocator);
}

void IJSONStruct::AddValue(Value& object, const char* key, Value& value, Allocator& allocator) const {
  if (!IsLeftOut(key)) object.AddMember(KeyRef(key), value, allocator);
}

void JSONStructAdapter::FromJSON(const rapidjson::Value&) {}

rapidjson::Value JSONStructAdapter::ToJSON(rapidjson::Document::AllocatorType&) {
  return rapidjson::Value();
}

bool JSONStructAdapter::Validate(const rapidjson::Value&) {
  return true;
}

bool ParseJsonRequest(IJSONStruct& record, const std::string& text) {
  if (text.empty() || text == "null") return false;
  // What stands behind a NUL is not looked at.
  std::string scratch = text;
  rapidjson::Document document;
  if (!json::ParseInPlace(scratch.data(), document)) return false;
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
