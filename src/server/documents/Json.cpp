// SPDX-License-Identifier: Apache-2.0
#include "server/documents/Json.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <charconv>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <unordered_set>

#include "base/system/Files.h"

namespace server::wire {

namespace {

// Whether at `at` stands the escape of a code point from U+D800 to U+DFFF whose second digit is one of `digits`.
bool IsHalfEscape(const std::string& text, size_t at, std::string_view digits) {
  return at + 3 < text.size() && text[at + 1] == 'u' && (text[at + 2] == 'd' || text[at + 2] == 'D') &&
         digits.find(text[at + 3]) != std::string_view::npos;
}

void AppendQuoted(std::string& out, std::string_view text) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  out.append(buffer.GetString(), buffer.GetSize());
}

}  // namespace

// The parser would take a NUL for the end of the text and the second half of a surrogate pair without the first for a
// code point, and the tree it builds must not be deep: one look before it.
void CheckShape(const std::string& text) {
  int depth = 0;
  bool inString = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\0') throw Refusal::Malformed("the body is not JSON");
    if (inString) {
      if (c == '"') inString = false;
      if (c != '\\') continue;
      if (IsHalfEscape(text, i, "cdefCDEF")) throw Refusal::Malformed("the body is not UTF-8");
      i += IsHalfEscape(text, i, "89abAB") ? 11 : 1;  // the parser wants a second half behind a first one
    } else if (c == '"') {
      inString = true;
    } else if (c == '{' || c == '[') {
      if (++depth > kMaxJsonDepth) throw Refusal::Malformed("the body is nested too deep");
    } else if (c == '}' || c == ']') {
      --depth;
    }
  }
}

rapidjson::Document Parse(const std::string& text) {
  CheckShape(text);
  rapidjson::Document document;
  if (!::json::Parse<rapidjson::kParseValidateEncodingFlag>(text, document))
    throw Refusal::Malformed("the body is not JSON");
  if (!document.IsObject()) throw Refusal::Malformed("the body is not a JSON object");
  return document;
}

rapidjson::Document ReadFile(const std::string& what, const std::string& file) {
  std::ifstream stream(base::PathOf(file), std::ios::binary);
  std::stringstream text;
  if (stream) text << stream.rdbuf();
  if (!stream || text.str().empty()) throw std::runtime_error("cannot read " + what);
  try {
    return Parse(text.str());
  } catch (const Refusal&) {
    throw std::runtime_error(what + " is not a JSON object");
  }
}

const rapidjson::Value* Find(const rapidjson::Value& object, const char* key) {
  const auto it = object.FindMember(key);
  return it == object.MemberEnd() || it->value.IsNull() ? nullptr : &it->value;
}

const rapidjson::Value& ObjectMember(const rapidjson::Value& object, const char* key) {
  const rapidjson::Value* member = Find(object, key);
  if (member == nullptr || !member->IsObject()) throw Refusal::Malformed("an object that the request needs is missing");
  return *member;
}

// Numbers are read here a second time on purpose, beside json/Numbers.h: what the library writes is read by other code
// than what the library reads with, so that a mistake cannot hide by being made twice.
int32_t Int(const rapidjson::Value& object, const char* key, std::optional<int32_t> absent) {
  const rapidjson::Value* member = Find(object, key);
  if (member == nullptr) {
    if (!absent) throw Refusal::Malformed("a number that the request needs is missing");
    return *absent;
  }
  if (member->IsInt()) return member->GetInt();
  if (member->IsUint()) return static_cast<int32_t>(member->GetUint());
  throw Refusal::Malformed("a value is not a number of 32 bits");
}

std::string String(const rapidjson::Value& object, const char* key, std::optional<std::string> absent) {
  const rapidjson::Value* member = Find(object, key);
  if (member == nullptr) {
    if (!absent) throw Refusal::Malformed("a text that the request needs is missing");
    return *absent;
  }
  if (!member->IsString()) throw Refusal::Malformed("a value is not a text");
  return {member->GetString(), member->GetStringLength()};
}

std::optional<int32_t> Id(const std::string& text) {
  int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  if (value < std::numeric_limits<int32_t>::min() || value > std::numeric_limits<uint32_t>::max()) return std::nullopt;
  return static_cast<int32_t>(value);
}

std::vector<int32_t> IdList(const std::string& text) {
  std::vector<int32_t> ids;
  std::unordered_set<int32_t> seen;
  for (size_t begin = 0; begin <= text.size();) {
    const size_t comma = std::min(text.find(',', begin), text.size());
    const std::optional<int32_t> id = Id(text.substr(begin, comma - begin));
    if (!id) throw Refusal::Malformed("a list of ids is ids joined by commas");
    if (seen.insert(*id).second) ids.push_back(*id);
    begin = comma + 1;
  }
  return ids;
}

bool IsUtf8(const std::string& text) {
  struct {
    void Put(char) {}
  } nowhere;
  rapidjson::MemoryStream stream(text.data(), text.size());
  while (stream.Tell() < text.size()) {
    if (!rapidjson::UTF8<>::Validate(stream, nowhere)) return false;
  }
  return true;
}

std::string Members(std::initializer_list<Member> members) {
  std::string text;
  for (const auto& [key, value] : members) {
    text.append(text.empty() ? "\"" : ",\"").append(key).append("\":");
    if (const auto* number = std::get_if<int32_t>(&value)) {
      text += std::to_string(*number);
    } else {
      AppendQuoted(text, std::get<std::string_view>(value));
    }
  }
  return text;
}

void AppendObject(std::string& elements, std::initializer_list<Member> members) {
  elements.append(elements.empty() ? "{" : ",{").append(Members(members)).append("}");
}

std::string Serialise(const rapidjson::Value& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  value.Accept(writer);
  return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace server::wire
