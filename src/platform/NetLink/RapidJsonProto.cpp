// SPDX-License-Identifier: Apache-2.0
#include "NetLink/RapidJsonProto.h"

#include <rapidjson/document.h>
#include <rapidjson/internal/dtoa.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "NetLink/JsonCursor.h"
#include "json/Numbers.h"
#include "json/ParseText.h"

namespace NetLink {
namespace {

using rapidjson::Value;

std::string_view TextOf(const Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

std::optional<int> IntOf(const Value& value) {
  std::optional<std::int64_t> number;
  if (value.IsInt64()) number = json::Of32Bits(value.GetInt64());
  if (value.IsDouble()) number = json::Of32Bits(value.GetDouble());
  if (value.IsString()) number = json::Of32Bits(TextOf(value));
  return number ? std::optional(json::AsSigned(*number)) : std::nullopt;
}

std::optional<double> DoubleOf(const Value& value) {
  if (value.IsNumber()) return value.GetDouble();
  if (value.IsString()) return json::Saturated(TextOf(value));
  return std::nullopt;
}

// RapidJSON's form of a number ("1.0", "1e30") with the shortest digits that read back as the same one, and of those
// the nearest: RapidJSON's own digits are not always either.
char* WriteDouble(double value, char* buffer) {
  char scientific[32];
  const char* const end =
      std::to_chars(scientific, scientific + sizeof scientific, value, std::chars_format::scientific).ptr;
  const char* from = scientific;
  char* to = buffer;
  if (*from == '-') *to++ = *from++;
  char* const digits = to;
  for (; *from != 'e'; ++from) {
    if (*from != '.') *to++ = *from;
  }
  int exponent = 0;
  std::from_chars(from[1] == '+' ? from + 2 : from + 1, end, exponent);
  const int count = static_cast<int>(to - digits);
  constexpr int kMaxDecimalPlaces = 324;
  return rapidjson::internal::Prettify(digits, count, exponent - (count - 1), kMaxDecimalPlaces);
}

// REQUIRES: a number.
std::string DecimalText(const Value& value) {
  char buffer[64];
  char* end = buffer;
  if (value.IsInt64()) {
    end = std::to_chars(buffer, buffer + sizeof buffer, value.GetInt64()).ptr;
  } else if (value.IsUint64()) {
    end = std::to_chars(buffer, buffer + sizeof buffer, value.GetUint64()).ptr;
  } else {
    end = WriteDouble(value.GetDouble(), buffer);
  }
  return std::string(buffer, end);
}

// Writes the tree with a stack of its own: documents from outside may be nested to any depth.
class TreeWriter {
 public:
  std::string Write(const Value& root) {
    Open(root);
    while (!m_open.empty()) WriteNext();
    return std::string(m_buffer.GetString(), m_buffer.GetSize());
  }

 private:
  struct Container {
    const Value* value;
    rapidjson::SizeType next;  // Position of the element or member to write next.
  };

  // Writes a scalar, or begins a container.
  void Open(const Value& value) {
    if (value.IsObject()) {
      m_writer.StartObject();
      m_open.push_back({&value, 0});
    } else if (value.IsArray()) {
      m_writer.StartArray();
      m_open.push_back({&value, 0});
    } else if (value.IsNumber()) {
      const std::string text = DecimalText(value);
      m_writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
    } else {
      value.Accept(m_writer);
    }
  }

  void WriteNext() {
    Container& container = m_open.back();
    const Value& value = *container.value;
    if (value.IsObject()) {
      if (container.next == value.MemberCount()) {
        m_writer.EndObject(value.MemberCount());
        m_open.pop_back();
        return;
      }
      const auto member = value.MemberBegin() + container.next++;
      m_writer.Key(member->name.GetString(), member->name.GetStringLength());
      Open(member->value);
    } else {
      if (container.next == value.Size()) {
        m_writer.EndArray(value.Size());
        m_open.pop_back();
        return;
      }
      Open(value[container.next++]);
    }
  }

  rapidjson::StringBuffer m_buffer;
  rapidjson::Writer<rapidjson::StringBuffer> m_writer{m_buffer};
  std::vector<Container> m_open;
};

}  // namespace

class CRapidJsonProto::Impl {
 public:
  Impl() { m_cursor.Reset(m_document); }

  bool Parse(const std::string& text) {
    Clear();
    m_text = text;
    // The parser takes a NUL for the end of the text.
    const bool parsed = json::ParseInPlace(m_text.data(), m_document) == text.size();
    if (!parsed) Clear();
    m_cursor.Reset(m_document);
    return parsed;
  }

  std::string Text() const { return TreeWriter().Write(m_document); }

  const Value* Find(std::string_view path) { return m_cursor.Find(path); }

  void Set(std::string_view path, Value&& value) {
    OrClear([&] {
      if (Value* const place = m_cursor.Make(path, m_document.GetAllocator())) *place = value;
    });
  }

  void Set(std::string_view path, const std::string& text) {
    OrClear([&] {
      auto& allocator = m_document.GetAllocator();
      if (Value* const place = m_cursor.Make(path, allocator)) {
        place->SetString(text.data(), static_cast<rapidjson::SizeType>(text.size()), allocator);
      }
    });
  }

 private:
  // Needs no memory.
  void Clear() {
    m_document.SetObject();
    m_document.GetAllocator().Clear();
    m_text.clear();
    m_cursor.Reset(m_document);
  }

  // An object that could not grow is not to be written to again.
  template <class Write>
  void OrClear(Write write) {
    try {
      write();
    } catch (...) {
      Clear();
      throw;
    }
  }

  // Where the texts of the document stand that were parsed.
  std::string m_text;
  // Values live in the document's memory pool, which goes as a whole: neither replacing nor destroying one descends
  // into it.
  rapidjson::Document m_document{rapidjson::kObjectType};
  JsonCursor m_cursor;
};

CRapidJsonProto::CRapidJsonProto() : m_impl(std::make_unique<Impl>()) {}
CRapidJsonProto::~CRapidJsonProto() = default;

bool CRapidJsonProto::set_str(const std::string& text) {
  return m_impl->Parse(text);
}

std::string CRapidJsonProto::get_str(int) const {
  return m_impl->Text();
}

int CRapidJsonProto::get_cnt(std::string_view path) const {
  const Value* const value = m_impl->Find(path);
  if (!value) return 0;
  return static_cast<int>(std::min<rapidjson::SizeType>(CountOf(*value), std::numeric_limits<int>::max()));
}

int CRapidJsonProto::get_int_v(std::string_view path, int defaultValue) const {
  const Value* const value = m_impl->Find(path);
  return value ? IntOf(*value).value_or(defaultValue) : defaultValue;
}

std::string CRapidJsonProto::get_v(std::string_view path, const std::string& defaultValue) const {
  const Value* const value = m_impl->Find(path);
  if (value && value->IsString()) return std::string(TextOf(*value));
  if (value && value->IsNumber()) return DecimalText(*value);
  return defaultValue;
}

float CRapidJsonProto::get_float_v(std::string_view path, float defaultValue) const {
  const Value* const value = m_impl->Find(path);
  const std::optional<double> number = value ? DoubleOf(*value) : std::nullopt;
  if (!number) return defaultValue;
  constexpr double kMax = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(*number, -kMax, kMax));
}

bool CRapidJsonProto::get_bool_v(std::string_view path, bool defaultValue) const {
  const Value* const value = m_impl->Find(path);
  return value && value->IsBool() ? value->GetBool() : defaultValue;
}

void CRapidJsonProto::set_v(std::string_view path, int value) {
  m_impl->Set(path, Value(value));
}
void CRapidJsonProto::set_v(std::string_view path, const std::string& value) {
  m_impl->Set(path, value);
}

}  // namespace NetLink
