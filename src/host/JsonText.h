// SPDX-License-Identifier: Apache-2.0
// Reading and writing the small JSON texts that travel between host and plugin. All parsing is iterative, so that no
// text can overflow the stack; nothing here recurses over a document.
#pragma once

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// Stands for a byte that is no UTF-8.
inline constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// False when `text` is not JSON in valid UTF-8; `document` is then null.
bool ParseJson(std::string_view text, rapidjson::Document& document);

// Whether the text is valid UTF-8. The plugin's answers need not be: they hold a server's bytes.
bool IsUtf8(std::string_view text);
// The text with U+FFFD for each byte that is no part of a UTF-8 character.
std::string ValidUtf8(std::string_view text);
// As ParseJson, of ValidUtf8(text).
bool ParseAnswer(std::string_view text, rapidjson::Document& document);

// Whether the plugin can read the text as a request: JSON up to its first NUL, in whatever encoding. If not, it uses
// the defaults.
bool IsReadAsRequest(std::string text);

// Null when `object` is no object or has no such member.
const rapidjson::Value* Find(const rapidjson::Value& object, const char* key);

// The value of a member, or what stands for it when `object` is no object, has no such member, or the member is of
// another kind.
std::string TextOf(const rapidjson::Value& object, const char* key);
int NumberOf(const rapidjson::Value& object, const char* key, int otherwise = 0);
// An id of 32 bits, said signed or unsigned; that of -1 where there is none.
uint32_t IdOf(const rapidjson::Value& object, const char* key);
bool FlagOf(const rapidjson::Value& object, const char* key);
// Always an array or an object, empty where there is none.
const rapidjson::Value& ListOf(const rapidjson::Value& object, const char* key);
const rapidjson::Value& ObjectOf(const rapidjson::Value& object, const char* key);

// RapidJSON's own String() takes std::string only when it is built so.
template <class Writer>
void WriteText(Writer& writer, std::string_view text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

// Builds one compact JSON object, member by member.
class ObjectText {
 public:
  ObjectText() { m_writer.StartObject(); }
  ObjectText& Add(const char* key, std::string_view text);
  ObjectText& Add(const char* key, const char* text) { return Add(key, std::string_view(text)); }
  ObjectText& Add(const char* key, int number);
  ObjectText& Add(const char* key, bool flag);
  ObjectText& AddNull(const char* key);
  // A value that is JSON text already.
  ObjectText& AddRaw(const char* key, std::string_view json);
  // The finished object. Nothing may be added afterwards.
  std::string Text();

 private:
  rapidjson::StringBuffer m_buffer;
  rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
};

}  // namespace host
