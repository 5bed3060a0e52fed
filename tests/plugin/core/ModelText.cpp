// SPDX-License-Identifier: Apache-2.0
#include "ModelText.h"

#include <sstream>
#include <type_traits>
#include <utility>
#include <vector>

namespace core_test {

using namespace QorviViewPlugin;

namespace {

std::string Show(const std::string& text) {
  return "'" + text + "'";
}
template <class Value>
std::string Show(const Value& value);
std::string Show(const IdPair& ids) {
  return "(" + Show(ids.first) + "," + Show(ids.second) + ")";
}
std::string Show(const ViewPage& page) {
  return Show(page.nSpliteType) + " " + Show(page.strCustomSplite) + " windows " + Show(page.vcWindows.size());
}
template <class Element>
std::string Show(const std::vector<Element>& list) {
  std::string text;
  for (const Element& element : list) text += "[" + Show(element) + "]";
  return text;
}

// A plain value, or a record as "(value,value,...)".
template <class Value>
std::string Show(const Value& value) {
  if constexpr (std::is_class_v<Value>) {
    std::string text;
    ForEachField<Value>([&](const auto& field) { text += (text.empty() ? "(" : ",") + Show(value.*field.member); });
    return text + ")";
  } else {
    std::ostringstream out;
    out << value;
    return out.str();
  }
}

}  // namespace

template <class Record>
std::string Difference(const Record& base, const Record& actual) {
  std::string text;
  ForEachField<Record>([&](const auto& field) {
    const std::string value = Show(actual.*field.member);
    if (Show(base.*field.member) != value) text += (text.empty() ? "" : " ") + std::string(field.key) + "=" + value;
  });
  return text;
}

template std::string Difference(const CameraGridStruct&, const CameraGridStruct&);
template std::string Difference(const ViewInfo&, const ViewInfo&);
template std::string Difference(const ViewGroupInfo&, const ViewGroupInfo&);

}  // namespace core_test
