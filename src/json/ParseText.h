// SPDX-License-Identifier: Apache-2.0
// How every text from outside becomes a RapidJSON document. Left to itself, RapidJSON 1.1 overflows an int and reads
// outside its tables for numbers of very many digits or far exponents, and takes some that no double holds for
// infinite. So RapidJSON passes numbers as texts, and PassNumber converts them. Stateless: any thread.
#pragma once

#include <rapidjson/document.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "json/Numbers.h"

namespace json {

// Passes a JSON number on as RapidJSON would: as the smallest of its integer kinds, else as a double, the nearest one.
// False when no double can hold it, and when the handler says so.
template <class Handler>
bool PassNumber(std::string_view number, Handler& handler) {
  if (number.front() == '-') {
    if (const auto value = WholeNumber<std::int64_t>(number)) {
      return *value >= INT32_MIN ? handler.Int(static_cast<std::int32_t>(*value)) : handler.Int64(*value);
    }
  } else if (const auto value = WholeNumber<std::uint64_t>(number)) {
    return *value <= UINT32_MAX ? handler.Uint(static_cast<std::uint32_t>(*value)) : handler.Uint64(*value);
  }
  double value = 0;
  const bool isHeld = std::from_chars(number.data(), number.data() + number.size(), value).ec == std::errc();
  if (!isHeld && IsTooLarge(number)) return false;
  return handler.Double(isHeld ? value : 0.0);
}

// Passes all events on to a handler that wants numbers as numbers, and texts to be copied or not. Numbers come raw; the
// reader's code names the other ways as well.
template <class Handler, bool CopyTexts>
class NumberMaker : public rapidjson::BaseReaderHandler<> {
 public:
  explicit NumberMaker(Handler& handler) : m_handler(handler) {}

  bool RawNumber(const char* text, rapidjson::SizeType length, bool) { return PassNumber({text, length}, m_handler); }
  bool Null() { return m_handler.Null(); }
  bool Bool(bool value) { return m_handler.Bool(value); }
  bool String(const char* text, rapidjson::SizeType length, bool) { return m_handler.String(text, length, CopyTexts); }
  bool StartObject() { return m_handler.StartObject(); }
  bool Key(const char* text, rapidjson::SizeType length, bool) { return m_handler.Key(text, length, CopyTexts); }
  bool EndObject(rapidjson::SizeType members) { return m_handler.EndObject(members); }
  bool StartArray() { return m_handler.StartArray(); }
  bool EndArray(rapidjson::SizeType elements) { return m_handler.EndArray(elements); }

 private:
  Handler& m_handler;
};

// Parses the text up to its first NUL, in place: it is overwritten, and unless they are copied the document's texts
// stay in it, so that it must outlive the document. The number of bytes parsed, or nothing when they are not JSON or
// hold a number that no double can; the document is then as it was. No depth of nesting costs stack. `Flags` are
// further flags of RapidJSON's.
template <unsigned int Flags = 0, bool CopyTexts = false>
std::optional<size_t> ParseInPlace(char* text, rapidjson::Document& document) {
  constexpr unsigned int kFlags =
      rapidjson::kParseIterativeFlag | rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag | Flags;
  rapidjson::InsituStringStream stream(text);
  rapidjson::Reader reader;
  auto generate = [&](rapidjson::Document& handler) {
    NumberMaker<rapidjson::Document, CopyTexts> maker(handler);
    return !reader.Parse<kFlags>(stream, maker).IsError();
  };
  document.Populate(generate);
  return reader.HasParseError() ? std::nullopt : std::optional(stream.Tell());
}

// Parses a whole text, of which the document keeps nothing. False, and the document as it was, where it is not JSON
// from end to end.
template <unsigned int Flags = 0>
bool Parse(std::string text, rapidjson::Document& document) {
  const size_t size = text.size();
  // Validating a character of four bytes, RapidJSON 1.1 takes all four before it looks at them.
  text.append(3, '\0');
  rapidjson::Document parsed;
  if (ParseInPlace<Flags, true>(text.data(), parsed) != size) return false;
  document.Swap(parsed);
  return true;
}

// Passes a whole text, which has no NUL, to a handler without making a document of it. False where it is not JSON from
// end to end; the handler has had some of it by then.
template <unsigned int Flags = 0, class Handler>
bool ParseEvents(std::string_view text, Handler& handler) {
  constexpr unsigned int kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag | Flags;
  rapidjson::MemoryStream stream(text.data(), text.size());  // gives NULs at its end, however many are taken
  rapidjson::Reader reader;
  NumberMaker<Handler, true> maker(handler);
  return !reader.Parse<kFlags>(stream, maker).IsError() && stream.Tell() == text.size();
}

}  // namespace json
