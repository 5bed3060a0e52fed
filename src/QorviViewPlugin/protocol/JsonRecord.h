// SPDX-License-Identifier: Apache-2.0
// JSON records: a plain structure with typed fields and defaults, and beside it an adapter "<Name>JSONStruct" that
// reads the structure from a JSON value and writes it back. Both come from one list of the fields (FieldList.h):
//
//     #define QORVI_LINK(FIELD) FIELD(Text, Name) FIELD(Integer, No, -1)
//     QORVI_RECORD(Link, QORVI_LINK)
//
// A line is FIELD(type, key) or FIELD(type, key, default); the field is named after its key. Types: Integer, Boolean,
// Text, another record (by value), or Sequence<record>. Keys are read and written in the list's order.
//
// Reading is lenient, field by field: a key that is missing or holds a value of another kind leaves its field as it is,
// of duplicate keys the first counts, texts end at their first NUL, and a sequence gains one element per array entry.
// A value that is no object reads as an object without members. Writing gives every key that the key filter does not
// leave out.
//
// One thread at a time per record and adapter; they share nothing.
#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <unordered_set>
#include <vector>

#include "QorviViewPlugin/base/FieldList.h"
#include "QorviViewPlugin/base/JsonWriter.h"
#include "json/MemberFinder.h"

namespace QorviVideoComm {

using Integer = int32_t;
using Boolean = bool;
using Text = std::string;
template <class Record>
using Sequence = std::vector<Record>;

// A restriction of the keys that a record writes. Mode 0 leaves out the listed keys, 1 writes only them, any other
// value restricts nothing.
struct JSONKeyFilter {
  uint32_t mode = 0;
  std::set<std::string> keys;
};

using QorviViewPlugin::ForEachField;

template <class Data>
using AdapterOf = typename decltype(AdapterTypeOf(std::type_identity<Data>{}))::type;

// A text as it is written: its bytes up to the first NUL.
inline rapidjson::Value::StringRefType WrittenText(const std::string& text) {
  return {text.c_str(), static_cast<rapidjson::SizeType>(std::strlen(text.c_str()))};
}

struct IJSONStruct {
  using Value = rapidjson::Value;
  using Allocator = rapidjson::Document::AllocatorType;
  using Members = json::MemberFinder<const Value>;

  virtual void FromJSON(const rapidjson::Value& value) = 0;
  // The answer refers to the bound structure's own texts. Write it before the structure changes or dies.
  virtual rapidjson::Value ToJSON(rapidjson::Document::AllocatorType& allocator) = 0;

  // Each reads one key of an object's members into the field and notes the key, if it is there and of the right kind.
  void ReadInteger(Members& members, const char* key, Integer& field);
  void ReadBoolean(Members& members, const char* key, Boolean& field);
  void ReadText(Members& members, const char* key, Text& field);
  template <class Data>
  void ReadNested(Members& members, const char* key, Data& field);
  template <class Data>
  void ReadSequence(Members& members, const char* key, Sequence<Data>& field);

  // Each adds one member to `object` unless the key filter leaves it out. The key must outlive the object.
  void AddInteger(Value& object, const char* key, Integer value, Allocator& allocator) const;
  void AddBoolean(Value& object, const char* key, Boolean value, Allocator& allocator) const;
  void AddText(Value& object, const char* key, const Text& value, Allocator& allocator) const;
  // For a nested object or an array, which is moved from.
  void AddValue(Value& object, const char* key, Value& value, Allocator& allocator) const;

  // The keys whose values this adapter has read. Those of nested adapters, which nobody can ask, stay empty.
  std::unordered_set<std::string> m_readKeys;
  // May be null, which restricts nothing.
  std::shared_ptr<JSONKeyFilter> m_keyFilter;

 protected:
  // Adapters are local objects that nobody deletes through the interface.
  ~IJSONStruct() = default;

 private:
  void NoteRead(const char* key) {
    if (!m_isNested) m_readKeys.insert(key);
  }
  template <class Data>
  static void ReadRecordWithin(const Value& value, Data& data);
  bool IsLeftOut(const char* key) const;

  bool m_isNested = false;
};

struct JSONStructAdapter : IJSONStruct {
  void FromJSON(const rapidjson::Value& value) override;
  rapidjson::Value ToJSON(rapidjson::Document::AllocatorType& allocator) override;
  virtual bool Validate(const rapidjson::Value& value);

 protected:
  ~JSONStructAdapter() = default;
};

// What the adapters of all records share. The structure is not owned and must outlive the adapter.
template <class Record>
struct RecordAdapter : JSONStructAdapter {
  using Data = Record;

  explicit RecordAdapter(Data* data) : m_pData(data) {}
  RecordAdapter(const RecordAdapter&) = delete;
  RecordAdapter& operator=(const RecordAdapter&) = delete;

  void FromJSON(const rapidjson::Value& value) override;
  rapidjson::Value ToJSON(rapidjson::Document::AllocatorType& allocator) override;

  Data* m_pData;

 protected:
  ~RecordAdapter() = default;

 private:
  template <class Type>
  void ReadField(Members& members, const char* key, Type& field);
  template <class Type>
  void AddField(rapidjson::Value& object, const char* key, Type& field, Allocator& allocator);
};

// Reads a JSON text, up to its first NUL, into the record. False, and the record untouched, when the text is empty,
// exactly "null" or not JSON. Depth of nesting costs no stack.
bool ParseJsonRequest(IJSONStruct& record, const std::string& text);

// The record as compact JSON.
std::string SerializeJsonResponse(IJSONStruct& record);

// --- Definitions

template <class Data>
void IJSONStruct::ReadRecordWithin(const Value& value, Data& data) {
  AdapterOf<Data> adapter(&data);
  static_cast<IJSONStruct&>(adapter).m_isNested = true;
  adapter.FromJSON(value);
}

template <class Data>
void IJSONStruct::ReadNested(Members& members, const char* key, Data& field) {
  const Value* found = members.Find(key);
  if (!found || !found->IsObject()) return;
  ReadRecordWithin(*found, field);
  NoteRead(key);
}

template <class Data>
void IJSONStruct::ReadSequence(Members& members, const char* key, Sequence<Data>& field) {
  const Value* found = members.Find(key);
  if (!found || !found->IsArray()) return;
  NoteRead(key);
  field.reserve(field.size() + found->Size());
  for (const Value& element : found->GetArray()) {
    Data data;
    ReadRecordWithin(element, data);
    field.push_back(std::move(data));
  }
}

template <class Type>
inline constexpr bool kIsSequence = false;
template <class Data>
inline constexpr bool kIsSequence<Sequence<Data>> = true;

template <class Record>
template <class Type>
void RecordAdapter<Record>::ReadField(Members& members, const char* key, Type& field) {
  if constexpr (std::is_same_v<Type, Integer>) {
    ReadInteger(members, key, field);
  } else if constexpr (std::is_same_v<Type, Boolean>) {
    ReadBoolean(members, key, field);
  } else if constexpr (std::is_same_v<Type, Text>) {
    ReadText(members, key, field);
  } else if constexpr (kIsSequence<Type>) {
    ReadSequence(members, key, field);
  } else {
    ReadNested(members, key, field);
  }
}

template <class Record>
void RecordAdapter<Record>::FromJSON(const rapidjson::Value& value) {
  Members members(&value);
  ForEachField<Data>([&](const auto& field) { ReadField(members, field.key, m_pData->*field.member); });
}

template <class Record>
template <class Type>
void RecordAdapter<Record>::AddField(rapidjson::Value& object, const char* key, Type& field, Allocator& allocator) {
  if constexpr (std::is_same_v<Type, Integer>) {
    AddInteger(object, key, field, allocator);
  } else if constexpr (std::is_same_v<Type, Boolean>) {
    AddBoolean(object, key, field, allocator);
  } else if constexpr (std::is_same_v<Type, Text>) {
    AddText(object, key, field, allocator);
  } else if constexpr (kIsSequence<Type>) {
    rapidjson::Value array(rapidjson::kArrayType);
    array.Reserve(static_cast<rapidjson::SizeType>(field.size()), allocator);
    for (auto& element : field) {
      AdapterOf<typename Type::value_type> nested(&element);
      array.PushBack(nested.ToJSON(allocator), allocator);
    }
    AddValue(object, key, array, allocator);
  } else {
    AdapterOf<Type> nested(&field);
    rapidjson::Value written = nested.ToJSON(allocator);
    AddValue(object, key, written, allocator);
  }
}

template <class Record>
rapidjson::Value RecordAdapter<Record>::ToJSON(rapidjson::Document::AllocatorType& allocator) {
  rapidjson::Value object(rapidjson::kObjectType);
  ForEachField<Data>([&](const auto& field) { AddField(object, field.key, m_pData->*field.member, allocator); });
  return object;
}

template <class Data>
void WriteRecord(QorviViewPlugin::JsonWriter& out, const Data& data);

template <class Type>
void WriteValue(QorviViewPlugin::JsonWriter& out, const Type& value) {
  if constexpr (std::is_same_v<Type, Integer>) {
    out.Int(value);
  } else if constexpr (std::is_same_v<Type, Boolean>) {
    out.Bool(value);
  } else if constexpr (std::is_same_v<Type, Text>) {
    out.String(value.c_str());
  } else if constexpr (kIsSequence<Type>) {
    out.BeginArray();
    for (const auto& element : value) WriteRecord(out, element);
    out.EndArray();
  } else {
    WriteRecord(out, value);
  }
}

// Writes the record straight into a text: the same bytes as its ToJSON, without the value tree.
template <class Data>
void WriteRecord(QorviViewPlugin::JsonWriter& out, const Data& data) {
  out.BeginObject();
  ForEachField<Data>([&](const auto& field) {
    out.Key({field.key, field.keyLength});
    WriteValue(out, data.*field.member);
  });
  out.EndObject();
}

// The same, but that `writeElements` writes the elements of one sequence, which need not stand in the record then.
template <class Data, class Element, class WriteElements>
void WriteRecord(QorviViewPlugin::JsonWriter& out, const Data& data, Sequence<Element> Data::*sequence,
                 const WriteElements& writeElements) {
  out.BeginObject();
  ForEachField<Data>([&](const auto& field) {
    out.Key({field.key, field.keyLength});
    if constexpr (std::is_same_v<decltype(field.member), Sequence<Element> Data::*>) {
      if (field.member == sequence) {
        out.BeginArray();
        writeElements();
        out.EndArray();
        return;
      }
    }
    WriteValue(out, data.*field.member);
  });
  out.EndObject();
}

// The same for an adapter whose record is known: no value tree is built unless a key filter has to be asked.
template <class Data>
std::string SerializeJsonResponse(RecordAdapter<Data>& record) {
  if (record.m_keyFilter) return SerializeJsonResponse(static_cast<IJSONStruct&>(record));
  QorviViewPlugin::JsonWriter out;
  WriteRecord(out, *record.m_pData);
  return out.Take();
}

}  // namespace QorviVideoComm

// Declares the structure and its adapter.
#define QORVI_RECORD(Name, FIELDS)                                      \
  QORVI_STRUCT(Name, FIELDS)                                            \
  struct Name##JSONStruct final : QorviVideoComm::RecordAdapter<Name> { \
    using RecordAdapter::RecordAdapter;                                 \
  };                                                                    \
  std::type_identity<Name##JSONStruct> AdapterTypeOf(std::type_identity<Name>);
