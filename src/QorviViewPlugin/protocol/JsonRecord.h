// SPDX-License-Identifier: Apache-2.0
// The framework of the protocol records. A record is a plain structure made from one list of its fields, and beside it an
// adapter that reads the structure from a JSON value and writes it back. One thread at a time.
//
// Reading is lenient field by field: a key that is missing, or holds a value of another kind, leaves its field as it is.
// An integer field takes only a number that is a signed 32-bit integer, a text field only a string (its bytes up to the
// first NUL), a nested record only an object, a sequence only an array, whose elements are appended. Of duplicate keys
// the first counts. Writing writes every key, in the order of the list.
#pragma once

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <unordered_set>
#include <vector>

namespace QorviVideoComm {

// Restricts the keys that are written: mode 0 leaves out those listed, 1 those not listed, any other mode none.
struct JSONKeyFilter {
  uint32_t mode = 0;
  std::set<std::string> keys;
};

struct IJSONStruct {
  using Allocator = rapidjson::Document::AllocatorType;

  // Every key whose value was read.
  std::unordered_set<std::string> m_readKeys;
  // May be null.
  std::shared_ptr<JSONKeyFilter> m_keyFilter;

  // Fills the bound structure. A value that is no object reads as an object without members.
  virtual void FromJSON(const rapidjson::Value& value) = 0;
  // An object whose texts refer to the structure: write it before the structure changes or dies.
  virtual rapidjson::Value ToJSON(Allocator& allocator) = 0;

  // Add a member, unless the filter says otherwise. The key must outlive the value.
  void AddInteger(rapidjson::Value& object, const char* key, int value, Allocator& allocator) const;
  void AddBoolean(rapidjson::Value& object, const char* key, bool value, Allocator& allocator) const;
  void AddText(rapidjson::Value& object, const char* key, const std::string& value, Allocator& allocator) const;
  void AddValue(rapidjson::Value& object, const char* key, rapidjson::Value value, Allocator& allocator) const;

 protected:
  ~IJSONStruct() = default;

 private:
  bool IsSkipped(const char* key) const;
};

struct JSONStructAdapter : IJSONStruct {
  void FromJSON(const rapidjson::Value&) override {}
  rapidjson::Value ToJSON(Allocator&) override { return rapidjson::Value(); }
  virtual bool Validate(const rapidjson::Value&) { return true; }

 protected:
  ~JSONStructAdapter() = default;
};

// --- The list of fields

template <class Record, class Member>
struct Field {
  const char* key;
  Member Record::*member;
};

template <class... Fields>
constexpr auto MakeFields(std::nullptr_t, Fields... fields) {
  return std::make_tuple(fields...);
}

template <class Record, class Visitor>
constexpr void ForEachField(Visitor&& visit) {
  std::apply([&](const auto&... fields) { (visit(fields), ...); }, Record::Fields());
}

#define QORVI_DECLARE_FIELD(FieldType, FieldName, ...) FieldType FieldName{__VA_ARGS__};
#define QORVI_LIST_FIELD(FieldType, FieldName, ...) \
  , QorviVideoComm::Field<Self, FieldType> { #FieldName, &Self::FieldName }

// Makes the structure Record and its adapter RecordJSONStruct from FIELDS(FIELD), a macro that says
// FIELD(type, name, default value if it is not the type's own) for each key in order.
#define QORVI_RECORD(Record, FIELDS)                                            \
  struct Record {                                                               \
    FIELDS(QORVI_DECLARE_FIELD)                                                 \
    static constexpr auto Fields() {                                            \
      using Self = Record;                                                      \
      return QorviVideoComm::MakeFields(nullptr FIELDS(QORVI_LIST_FIELD));      \
    }                                                                           \
  };                                                                            \
  struct Record##JSONStruct : QorviVideoComm::RecordAdapter<Record> {           \
    using RecordAdapter::RecordAdapter;                                         \
  };

// --- The adapter

// The first member of that name in an object, or null.
const rapidjson::Value* FindKey(const rapidjson::Value& value, const char* key);

// Bound to one structure, which it does not own and must not outlive.
template <class Record>
struct RecordAdapter : JSONStructAdapter {
  explicit RecordAdapter(Record* data) : m_pData(data) {}

  void FromJSON(const rapidjson::Value& value) override {
    ForEachField<Record>([&](const auto& field) {
      const rapidjson::Value* const found = FindKey(value, field.key);
      if (found && Read(*found, m_pData->*field.member)) m_readKeys.insert(field.key);
    });
  }

  rapidjson::Value ToJSON(Allocator& allocator) override {
    rapidjson::Value object(rapidjson::kObjectType);
    ForEachField<Record>([&](const auto& field) { Add(object, field.key, m_pData->*field.member, allocator); });
    return object;
  }

  Record* m_pData;

 private:
  // Each answers whether the value was of the field's kind and stored.
  static bool Read(const rapidjson::Value& value, int& field) {
    if (!value.IsInt()) return false;
    field = value.GetInt();
    return true;
  }
  static bool Read(const rapidjson::Value& value, bool& field) {
    if (!value.IsBool()) return false;
    field = value.GetBool();
    return true;
  }
  static bool Read(const rapidjson::Value& value, std::string& field) {
    if (!value.IsString()) return false;
    field = value.GetString();
    return true;
  }
  template <class Nested>
  static bool Read(const rapidjson::Value& value, Nested& field) {
    if (!value.IsObject()) return false;
    RecordAdapter<Nested>(&field).FromJSON(value);
    return true;
  }
  template <class Element>
  static bool Read(const rapidjson::Value& value, std::vector<Element>& field) {
    if (!value.IsArray()) return false;
    field.reserve(field.size() + value.Size());
    for (const rapidjson::Value& element : value.GetArray()) {
      RecordAdapter<Element>(&field.emplace_back()).FromJSON(element);
    }
    return true;
  }

  void Add(rapidjson::Value& object, const char* key, int value, Allocator& allocator) const {
    AddInteger(object, key, value, allocator);
  }
  void Add(rapidjson::Value& object, const char* key, bool value, Allocator& allocator) const {
    AddBoolean(object, key, value, allocator);
  }
  void Add(rapidjson::Value& object, const char* key, const std::string& value, Allocator& allocator) const {
    AddText(object, key, value, allocator);
  }
  template <class Nested>
  void Add(rapidjson::Value& object, const char* key, Nested& value, Allocator& allocator) const {
    AddValue(object, key, RecordAdapter<Nested>(&value).ToJSON(allocator), allocator);
  }
  template <class Element>
  void Add(rapidjson::Value& object, const char* key, std::vector<Element>& value, Allocator& allocator) const {
    rapidjson::Value array(rapidjson::kArrayType);
    array.Reserve(static_cast<rapidjson::SizeType>(value.size()), allocator);
    for (Element& element : value) array.PushBack(RecordAdapter<Element>(&element).ToJSON(allocator), allocator);
    AddValue(object, key, std::move(array), allocator);
  }
};

// --- Writing straight from the fields: the same bytes as ToJSON gives, without a tree in between.

template <class Writer>
void WriteField(Writer& writer, int value) {
  writer.Int(value);
}
template <class Writer>
void WriteField(Writer& writer, bool value) {
  writer.Bool(value);
}
template <class Writer>
void WriteField(Writer& writer, const std::string& value) {
  writer.String(value.c_str(), static_cast<rapidjson::SizeType>(std::strlen(value.c_str())));
}
template <class Writer, class Record>
void WriteField(Writer& writer, const Record& record);

template <class Writer, class Element>
void WriteField(Writer& writer, const std::vector<Element>& elements) {
  writer.StartArray();
  for (const Element& element : elements) WriteField(writer, element);
  writer.EndArray();
}
template <class Writer, class Record>
void WriteField(Writer& writer, const Record& record) {
  writer.StartObject();
  ForEachField<Record>([&](const auto& field) {
    writer.Key(field.key);
    WriteField(writer, record.*field.member);
  });
  writer.EndObject();
}

// --- Text to record and back

// False, and the record untouched, when the text is empty, exactly "null", or no JSON (text after a NUL is not seen).
bool ParseJsonRequest(IJSONStruct& record, const std::string& text);

// The record as compact JSON.
std::string SerializeJsonResponse(IJSONStruct& record);

template <class Record>
std::string SerializeJsonResponse(RecordAdapter<Record>& record) {
  // What a filter leaves out is decided while the tree is built.
  if (record.m_keyFilter) return SerializeJsonResponse(static_cast<IJSONStruct&>(record));
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  WriteField(writer, *record.m_pData);
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace QorviVideoComm
