// SPDX-License-Identifier: Apache-2.0
#include "host/JsonText.h"

#include "json/Numbers.h"
#include "json/ParseText.h"

namespace host {
namespace {

// The length of the UTF-8 character that the text begins with, 0 where it begins with none.
size_t CharacterLength(std::string_view text) {
  const auto byte = [&](size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u; };
  const unsigned lead = byte(0);
  if (lead < 0x80) return 1;
  const size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                        : lead >= 0xE0 && lead <= 0xEF ? 3
                        : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                       : 0;
  for (size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0) != 0x80) return 0;
  }
  // Longer than need be, a surrogate, or beyond the last character.
  const unsigned second = byte(1);
  const bool isWrong = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                       (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
  return isWrong ? 0 : length;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  return ValidUtf8(text) == text;
}

std::string ValidUtf8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  while (!text.empty()) {
    const size_t length = CharacterLength(text);
    if (length == 0) {
      valid += kReplacement;
    } else {
      valid += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return valid;
}

bool ParseAnswer(std::string_view text, rapidjson::Document& document) {
  return ParseJson(ValidUtf8(text), document);
}

bool IsReadAsRequest(std::string text) {
  rapidjson::Document document;
  return json::ParseInPlace(text.data(), document).has_value();
}

bool ParseJson(std::string_view text, rapidjson::Document& document) {
  const bool parsed = json::Parse<rapidjson::kParseValidateEncodingFlag>(std::string(text), document);
  if (!parsed) document.SetNull();
  return parsed;
}

const rapidjson::Value* Find(const rapidjson::Value& object, const char* key) {
  if (!object.IsObject()) return nullptr;
  const auto member = object.FindMember(key);
  return member == object.MemberEnd() ? nullptr : &member->value;
}

std::string TextOf(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsString() ? std::string(value->GetString(), value->GetStringLength()) : std::string();
}

int NumberOf(const rapidjson::Value& object, const char* key, int otherwise) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsInt() ? value->GetInt() : otherwise;
}

uint32_t IdOf(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* value = Find(object, key);
  const auto id = value && value->IsInt64() ? json::Of32Bits(value->GetInt64()) : std::nullopt;
  return static_cast<uint32_t>(id.value_or(-1));
}

bool FlagOf(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsTrue();
}

const rapidjson::Value& ListOf(const rapidjson::Value& object, const char* key) {
  static const rapidjson::Value empty(rapidjson::kArrayType);
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsArray() ? *value : empty;
}

const rapidjson::Value& ObjectOf(const rapidjson::Value& object, const char* key) {
  static const rapidjson::Value empty(rapidjson::kObjectType);
  const rapidjson::Value* value = Find(object, key);
  return value && value->IsObject() ? *value : empty;
}

ObjectText& ObjectText::Add(const char* key, std::string_view text) {
  m_writer.Key(key);
  // Whatever bytes a function answers with, what is printed is valid UTF-8.
  WriteText(m_writer, ValidUtf8(text));
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
