// SPDX-License-Identifier: Apache-2.0
#include "host/RawJson.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "host/JsonText.h"

namespace host {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool IsBlank(char c) {
  return kBlanks.find(c) != std::string_view::npos;
}

// Behind the closing quote of the string that opens at `begin`.
size_t StringEnd(std::string_view text, size_t begin) {
  size_t i = begin + 1;
  while (text[i] != '"') i += text[i] == '\\' ? 2 : 1;
  return i + 1;
}

size_t SkipBlanks(std::string_view text, size_t i) {
  const size_t next = text.find_first_not_of(kBlanks, i);
  return next == std::string_view::npos ? text.size() : next;
}

// Behind the value that starts at `begin`; brackets are only counted, because the text is known to be JSON.
size_t ValueEnd(std::string_view text, size_t begin) {
  size_t depth = 0;
  for (size_t i = begin; i < text.size();) {
    const char c = text[i];
    if (c == '"') {
      i = StringEnd(text, i);
      if (depth == 0) return i;
      continue;
    }
    if (c == '{' || c == '[') ++depth;
    if (c == '}' || c == ']') {
      if (depth == 0) return i;  // end of what holds this number or word
      if (--depth == 0) return i + 1;
    }
    if (depth == 0 && (c == ',' || IsBlank(c))) return i;
    ++i;
  }
  return text.size();
}

std::string Unescaped(std::string_view token) {
  rapidjson::Document document;
  ParseJson(token, document);
  return document.IsString() ? std::string(document.GetString(), document.GetStringLength()) : std::string();
}

}  // namespace

bool IsJson(std::string_view text) {
  // The parser would take a NUL for the end and skip a byte order mark, which is no blank.
  if (text.find('\0') != std::string_view::npos || text.substr(0, 3) == "\xEF\xBB\xBF") return false;
  constexpr unsigned kFlags =
      rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseNumbersAsStringsFlag;
  rapidjson::MemoryStream bytes(text.data(), text.size());
  rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(bytes);
  rapidjson::BaseReaderHandler<> ignoreAll;
  rapidjson::Reader reader;
  return !reader.Parse<kFlags>(stream, ignoreAll).IsError();
}

std::string WithoutBlanks(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    if (text[i] == '"') {
      const size_t end = StringEnd(text, i);
      result.append(text.substr(i, end - i));
      i = end;
    } else {
      if (!IsBlank(text[i])) result.push_back(text[i]);
      ++i;
    }
  }
  return result;
}

std::optional<std::vector<RawMember>> SplitObject(std::string_view text) {
  if (!IsJson(text)) return std::nullopt;
  size_t i = SkipBlanks(text, 0);
  if (text[i] != '{') return std::nullopt;
  std::vector<RawMember> members;
  i = SkipBlanks(text, i + 1);
  while (text[i] != '}') {
    const size_t nameEnd = StringEnd(text, i);
    std::string name = Unescaped(text.substr(i, nameEnd - i));
    const size_t colon = SkipBlanks(text, nameEnd);
    const size_t value = SkipBlanks(text, colon + 1);
    const size_t end = ValueEnd(text, value);
    members.push_back({std::move(name), text.substr(value, end - value)});
    i = SkipBlanks(text, end);
    if (text[i] == ',') i = SkipBlanks(text, i + 1);
  }
  return members;
}

}  // namespace host
