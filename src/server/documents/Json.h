// SPDX-License-Identifier: Apache-2.0
// Reading JSON that came from outside, and writing it. Readers throw a Refusal (malformed request) on whatever is not
// as they want it; no document that was parsed here is nested deeper than kMaxJsonDepth, so that recursion over it is
// safe.
#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "json/ParseText.h"
#include "server/model/Refusal.h"

namespace server::wire {

constexpr int kMaxJsonDepth = 100;

rapidjson::Document Parse(const std::string& text);
// Refuses what no parser is to see: NULs, halves of surrogate pairs, what is nested deeper.
void CheckShape(const std::string& text);
// The same text as events, and nothing kept of it.
template <class Handler>
void Parse(const std::string& text, Handler& handler) {
  CheckShape(text);
  if (!::json::ParseEvents<rapidjson::kParseValidateEncodingFlag>(text, handler)) {
    throw Refusal::Malformed("the body is not JSON");
  }
  if (text[text.find_first_not_of(" \t\r\n")] != '{') throw Refusal::Malformed("the body is not a JSON object");
}
// Throws std::runtime_error with one plain line that calls the file `what`.
rapidjson::Document ReadFile(const std::string& what, const std::string& file);

// The member; null where it is absent or `null`. The first of several with one name counts.
// REQUIRES: `object` is an object.
const rapidjson::Value* Find(const rapidjson::Value& object, const char* key);
const rapidjson::Value& ObjectMember(const rapidjson::Value& object, const char* key);

// Numbers are integers of 32 bits; an unsigned one is reinterpreted as signed. Without a default they must be there.
int32_t Int(const rapidjson::Value& object, const char* key, std::optional<int32_t> absent = std::nullopt);
std::string String(const rapidjson::Value& object, const char* key, std::optional<std::string> absent = std::nullopt);

// Ids joined by ",", each wholly -?[0-9]+ and within 32 bits (signed or unsigned); at least one. Repeats count once,
// where they first stand.
std::vector<int32_t> IdList(const std::string& text);
std::optional<int32_t> Id(const std::string& text);

bool IsUtf8(const std::string& text);

struct Member {
  const char* key;
  std::variant<int32_t, std::string_view> value;
};
std::string Members(std::initializer_list<Member> members);  // `"key":number,"key":"text"`
// Adds an object to the elements of an array.
void AppendObject(std::string& elements, std::initializer_list<Member> members);
std::string Serialise(const rapidjson::Value& value);

}  // namespace server::wire
