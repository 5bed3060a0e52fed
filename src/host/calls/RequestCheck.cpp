// SPDX-License-Identifier: Apache-2.0
#include "host/calls/RequestCheck.h"

#include <algorithm>
#include <array>
#include <set>
#include <type_traits>

#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "QorviViewPlugin/protocol/UserMessages.h"
#include "host/JsonText.h"
#include "host/Suggestion.h"
#include "json/ParseText.h"

namespace host {
namespace {

namespace protocol = QorviViewPlugin_view_plugin_protocol;
using rapidjson::Value;

enum class Takes { kNumber, kFlag, kText, kObject, kList };

// The keys that a record has, as the library declares them.
struct Keys {
  struct Key {
    std::string name;
    Takes takes;
    const Keys* below;  // of an object, or of a list's entries
  };
  std::vector<Key> keys;
};

template <class Data>
const Keys& KeysOf();

template <class Type>
Keys::Key MakeKey(const char* name) {
  if constexpr (std::is_same_v<Type, QorviVideoComm::Integer>) return {name, Takes::kNumber, nullptr};
  if constexpr (std::is_same_v<Type, QorviVideoComm::Boolean>) return {name, Takes::kFlag, nullptr};
  if constexpr (std::is_same_v<Type, QorviVideoComm::Text>) return {name, Takes::kText, nullptr};
  if constexpr (QorviVideoComm::kIsSequence<Type>) {
    return {name, Takes::kList, &KeysOf<typename Type::value_type>()};
  } else if constexpr (std::is_class_v<Type> && !std::is_same_v<Type, QorviVideoComm::Text>) {
    return {name, Takes::kObject, &KeysOf<Type>()};
  }
}

template <class Data>
const Keys& KeysOf() {
  static const Keys known = [] {
    Keys keys;
    QorviVideoComm::ForEachField<Data>([&](const auto& field) {
      using Type = std::remove_cvref_t<decltype(std::declval<Data>().*field.member)>;
      keys.keys.push_back(MakeKey<Type>(field.key));
    });
    return keys;
  }();
  return known;
}

struct Exchange {
  std::string_view name;
  const Keys& (*keys)();
  bool isEdit = false;
};

constexpr std::array kExchanges = {
    Exchange{"IsInitViewGroupFinish", KeysOf<protocol::ClienInitViewDataRequest>},
    Exchange{"IsInitViewFinish", KeysOf<protocol::ClienInitViewDataRequest>},
    Exchange{"GetPlanGroups", KeysOf<protocol::GetPlanGroupsRequest>},
    Exchange{"AddPlanGroup", KeysOf<protocol::AddPlanGroupRequest>, true},
    Exchange{"UpdatePlanGroup", KeysOf<protocol::UpdatePlanGroupRequest>, true},
    Exchange{"DeletePlanGroup", KeysOf<protocol::DeletePlanGroupRequest>, true},
    Exchange{"GetPlansInGroup", KeysOf<protocol::GetPlansInGroupRequest>},
    Exchange{"GetPlanDetail", KeysOf<protocol::GetPlanDetailRequest>},
    Exchange{"GetPlanConfig", KeysOf<protocol::GetPlanConfigRequest>},
    Exchange{"AddPlan", KeysOf<protocol::AddPlanRequest>, true},
    Exchange{"UpdatePlan", KeysOf<protocol::UpdatePlanRequest>, true},
    Exchange{"DeletePlan", KeysOf<protocol::DeletePlanResquest>, true},
    Exchange{"GetCurrentUser", KeysOf<protocol::GetCurrentUserRequest>},
    Exchange{"GetAllUserInfo", KeysOf<protocol::UserRequestInfo>},
    Exchange{"ViewShareUsers", KeysOf<protocol::ViewShareResquestInfo>, true},
    Exchange{"GetClientViewConfig", KeysOf<protocol::GetClientDefaultViewConfigRequest>},
    Exchange{"SetClientViewConfig", KeysOf<protocol::ClienDefaultViewConfigRequest>, true},
};

const Exchange* Find(std::string_view name) {
  const auto found = std::ranges::find(kExchanges, name, &Exchange::name);
  return found == kExchanges.end() ? nullptr : &*found;
}

bool IsOf(Takes takes, const Value& value) {
  switch (takes) {
    case Takes::kNumber:
      return value.IsInt();
    case Takes::kFlag:
      return value.IsBool();
    case Takes::kText:
      return value.IsString();
    case Takes::kObject:
      return value.IsObject();
    case Takes::kList:
      return value.IsArray();
  }
  return false;
}

const char* WordOf(Takes takes) {
  constexpr const char* kWords[] = {"a whole number of 32 bits", "true or false", "a text", "an object", "a list"};
  return kWords[static_cast<int>(takes)];
}

// Walks over a request; no deeper than the records of the library go.
class Checker {
 public:
  void CheckObject(const Value& object, const Keys& keys, const std::string& where) {
    std::set<std::string> seen;
    for (const auto& member : object.GetObject()) {
      const std::string name(member.name.GetString(), member.name.GetStringLength());
      if (!seen.insert(name).second) Note(where, "\"" + name + "\" is there twice, and only the first counts");
      const auto key = std::ranges::find(keys.keys, name, &Keys::Key::name);
      if (key == keys.keys.end()) {
        NoteUnknown(name, keys, where);
      } else {
        CheckValue(member.value, *key, where.empty() ? name : std::string(where).append(".").append(name));
      }
    }
  }

  std::vector<std::string> Take() { return std::move(m_faults); }

 private:
  void CheckValue(const Value& value, const Keys::Key& key, const std::string& where) {
    if (!IsOf(key.takes, value)) return Note(where, std::string("it takes ") + WordOf(key.takes));
    if (key.takes == Takes::kObject) CheckObject(value, *key.below, where);
    if (key.takes != Takes::kList) return;
    size_t number = 0;
    for (const Value& entry : value.GetArray()) {
      const std::string at = where + "[" + std::to_string(++number) + "]";
      if (entry.IsObject()) {
        CheckObject(entry, *key.below, at);
      } else {
        Note(at, "it takes an object");
      }
    }
  }

  void NoteUnknown(const std::string& name, const Keys& keys, const std::string& where) {
    std::vector<std::string> names;
    for (const Keys::Key& key : keys.keys) names.push_back(key.name);
    Note(where, "there is no key \"" + name + "\"" + Suggestion(name, names, "\""));
  }

  void Note(const std::string& where, const std::string& fault) {
    m_faults.push_back(where.empty() ? fault : where + ": " + fault);
  }

  std::vector<std::string> m_faults;
};

// "line 2, column 14".
std::string PlaceOf(std::string_view text, size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const size_t lineEnd = before.rfind('\n');
  const size_t column = lineEnd == std::string_view::npos ? offset + 1 : offset - lineEnd;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// Where the text stops being JSON.
std::string NotJson(std::string text) {
  const std::string whole = text;
  text.push_back('\0');
  rapidjson::InsituStringStream stream(text.data());
  rapidjson::Reader reader;
  rapidjson::BaseReaderHandler<> ignoreAll;
  reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag>(
      stream, ignoreAll);
  if (!reader.HasParseError()) return "the request holds a number that is too large, or ends within its text";
  return "the request is no JSON at " + PlaceOf(whole, std::min(reader.GetErrorOffset(), whole.size()));
}

}  // namespace

std::vector<std::string> FaultsOf(std::string_view exchange, const std::string& request) {
  const Exchange* known = Find(exchange);
  if (!known) return {};
  rapidjson::Document document;
  if (request.empty()) {
    document.SetObject();
  } else if (!json::Parse(request, document)) {
    return {NotJson(request)};
  }
  if (!document.IsObject()) return {"the request is no object"};
  Checker checker;
  checker.CheckObject(document, known->keys(), "");
  std::vector<std::string> faults = checker.Take();
  const bool emptiesView = exchange == "UpdatePlan" && !document.HasMember("PlanPages");
  if (emptiesView) {
    faults.push_back(
        "\"PlanPages\" is missing, so the view would lose all its pages: give those that it is to keep, as "
        "GetPlanDetail answers them, or [] for none");
  }
  return faults;
}

std::vector<std::string> ExchangeNames() {
  std::vector<std::string> names;
  names.reserve(std::size(kExchanges));
  for (const Exchange& exchange : kExchanges) names.emplace_back(exchange.name);
  return names;
}

bool IsEdit(std::string_view exchange) {
  const Exchange* known = Find(exchange);
  return known && known->isEdit;
}

}  // namespace host
