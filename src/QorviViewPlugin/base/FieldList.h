// SPDX-License-Identifier: Apache-2.0
// Records that are declared as one list of their fields. This header keeps to C++17, because hosts include it through
// ViewExport.h.
//
//     #define QORVI_LINK(FIELD) FIELD(std::string, name) FIELD(int, number, -1)
//     QORVI_STRUCT(Link, QORVI_LINK)
//
// A line is FIELD(type, name) or FIELD(type, name, default). The structure has the fields in the list's order; whatever
// treats a record field by field walks through the list (ForEachField), or expands it once more.
#pragma once

#include <cstddef>
#include <tuple>

namespace QorviViewPlugin {

// One field of a record: its name and where it is.
template <class Record, class Type>
struct Field {
  const char* key;
  std::size_t keyLength;
  Type Record::*member;
};

template <class Record, class Type, std::size_t N>
constexpr Field<Record, Type> MakeField(const char (&key)[N], Type Record::*member) {
  return {key, N - 1, member};
}

// Calls visit(field) for every field of the record, in the list's order.
template <class Record, class Visitor>
constexpr void ForEachField(Visitor&& visit) {
  std::apply([&visit](const auto&... field) { (visit(field), ...); }, FieldsOf(static_cast<const Record*>(nullptr)));
}

template <class Record>
bool HaveEqualFields(const Record& one, const Record& other) {
  bool areEqual = true;
  ForEachField<Record>([&](const auto& field) { areEqual = areEqual && one.*field.member == other.*field.member; });
  return areEqual;
}

}  // namespace QorviViewPlugin

// C++17 wants an argument for the dots, if an empty one.
#define QORVI_STRUCT_MEMBER(...) QORVI_STRUCT_MEMBER_OF(__VA_ARGS__, )
#define QORVI_STRUCT_MEMBER_OF(type, name, ...) type name{__VA_ARGS__};
#define QORVI_STRUCT_FIELD(...) QORVI_STRUCT_FIELD_OF(__VA_ARGS__, )
#define QORVI_STRUCT_FIELD_OF(type, name, ...) QorviViewPlugin::MakeField(#name, &Record::name),

// Declares the structure, its fields in order, and that two of them are equal when all their fields are.
#define QORVI_STRUCT(Name, FIELDS)                             \
  struct Name {                                                \
    FIELDS(QORVI_STRUCT_MEMBER)                                \
  };                                                           \
  constexpr auto FieldsOf(const Name*) {                       \
    using Record = Name;                                       \
    return std::tuple{FIELDS(QORVI_STRUCT_FIELD)};             \
  }                                                            \
  inline bool operator==(const Name& one, const Name& other) { \
    return QorviViewPlugin::HaveEqualFields(one, other);       \
  }
