// SPDX-License-Identifier: Apache-2.0
#include "host/ScriptLine.h"

#include <algorithm>
#include <initializer_list>

#include "host/JsonText.h"
#include "host/RawJson.h"

namespace host {
namespace {

using Members = std::vector<RawMember>;

const RawMember* Find(const Members& members, std::string_view name) {
  const auto found =
      std::find_if(members.begin(), members.end(), [&](const RawMember& member) { return member.name == name; });
  return found == members.end() ? nullptr : &*found;
}

// A member that is not among the names, or null.
const RawMember* FindOther(const Members& members, std::initializer_list<std::string_view> names) {
  const auto found = std::find_if(members.begin(), members.end(), [&](const RawMember& member) {
    return std::find(names.begin(), names.end(), member.name) == names.end();
  });
  return found == members.end() ? nullptr : &*found;
}

std::optional<std::string> StringValue(std::string_view json) {
  rapidjson::Document document;
  if (json.empty() || json[0] != '"' || !ParseJson(json, document)) return std::nullopt;
  return std::string(document.GetString(), document.GetStringLength());
}

ScriptLine ParseCall(const Members& members) {
  CallLine line;
  const auto function = StringValue(Find(members, "call")->value);
  if (!function) return WrongLine{"\"call\" must be the name of a function"};
  line.function = *function;
  if (const RawMember* request = Find(members, "request")) {
    const auto text = StringValue(request->value);
    line.request = text ? *text : WithoutBlanks(request->value);
  }
  if (const RawMember* response = Find(members, "response")) {
    const auto text = StringValue(response->value);
    if (!text) return WrongLine{"\"response\" must be a string"};
    line.response = *text;
  }
  return line;
}

ScriptLine ParseObserve(std::string_view value, bool isRegister) {
  const auto members = SplitObject(value);
  if (!members) return WrongLine{"what is observed must be an object"};
  if (Find(*members, "IsRegister")) return WrongLine{"\"IsRegister\" is added by the script"};
  std::string request = WithoutBlanks(value);
  request.pop_back();
  request += members->empty() ? "" : ",";
  request += isRegister ? "\"IsRegister\":true}" : "\"IsRegister\":false}";
  return ObserveLine{request};
}

ScriptLine ParseSettle(std::string_view value) {
  rapidjson::Document document;
  ParseJson(value, document);
  if (!document.IsInt() || document.GetInt() < 0) return WrongLine{"\"settle\" must be a number of milliseconds"};
  return SettleLine{document.GetInt()};
}

}  // namespace

ScriptLine ParseScriptLine(std::string_view text) {
  const auto members = SplitObject(text);
  if (!members) return WrongLine{IsJson(text) ? "the line is not an object" : "the line is not JSON"};
  if (Find(*members, "call")) {
    if (const RawMember* other = FindOther(*members, {"call", "request", "response"})) {
      return WrongLine{"a call has no \"" + other->name + "\""};
    }
    return ParseCall(*members);
  }
  for (const char* kind : {"load", "observe", "unobserve", "settle"}) {
    const RawMember* member = Find(*members, kind);
    if (!member) continue;
    if (const RawMember* other = FindOther(*members, {kind})) {
      return WrongLine{std::string("\"") + kind + "\" stands alone, without \"" + other->name + "\""};
    }
    const std::string_view name = kind;
    if (name == "load") {
      return member->value == "true" ? ScriptLine(LoadLine{}) : WrongLine{"\"load\" must be true"};
    }
    if (name == "settle") return ParseSettle(member->value);
    return ParseObserve(member->value, name == "observe");
  }
  return WrongLine{"the line is none of call, load, observe, unobserve and settle"};
}

}  // namespace host
