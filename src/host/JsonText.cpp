// SPDX-License-Identifier: Apache-2.0
#include "host/JsonText.h"

#include <QString>

#include "json/ParseText.h"

namespace host {
namespace {

const rapidjson::Value* Find(const rapidjson::Value& object, const char* key) {
  if (!object.IsObject()) return nullptr;
  const auto member = object.FindMember(key);
  return member == object.MemberEnd() ? nullptr : &member->value;
}

const rapidjson::Value& EmptyList() {
  static const rapidjson::Value list(rapidjson::kArrayType);
  return list;
}

const rapidjson::Value& EmptyObject() {
  static const rapidjson::Value object(rapidjson::kObjectType);
  return object;
}

}  // namespace

bool ParseJson(std::string_view text, rapidjson::Document& document) {
  const bool parsed = json::Parse<rapidjson::kParseValidateEncodingFlag>(std::string(text), document);
  if (!parsed) document.SetNull();
  return parsed;
}

std::string TextOf(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsString() ? std::string(value->GetString(), value->GetStringLength()) : std::string();
}

int NumberOf(const rapidjson::Value& object, const char* key, int otherwise) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsInt() ? value->GetInt() : otherwise;
}

bool FlagOf(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsTrue();
}

const rapidjson::Value& ListOf(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsArray() ? *value : EmptyList();
}

const rapidjson::Value& ObjectOf(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsObject() ? *value : EmptyObject();
}

ObjectText& ObjectText::Add(const char* key, std::string_view text) {
  m_writer.Key(key);
  // Whatever bytes a function answers with, what is printed is valid UTF-8.
  const std::string valid = QString::fromUtf8(text.data(), static_cast<int>(text.size())).toStdString();
  WriteText(m_writer, valid);
  return *this;
}

ObjectText& ObjectText::Add(const char* key, int number) {
  m_writer.Key(key);
  m_writer.Int(number);
  return *this;
}

ObjectText& ObjectText::Add(const char* key, bool flag) {
  m_writer.Key(key);
  m_writer.Bool(flag);
  return *this;
}

ObjectText& ObjectText::AddNull(const char* key) {
  m_writer.Key(key);
  m_writer.Null();
  return *this;
}

ObjectText& ObjectText::AddRaw(const char* key, std::string_view json) {
  m_writer.Key(key);
  m_writer.RawValue(json.data(), json.size(), rapidjson::kObjectType);
  return *this;
}

std::string ObjectText::Text() {
  m_writer.EndObject();
  return std::string(m_buffer.GetString(), m_buffer.GetSize());
}

}  // namespace host
