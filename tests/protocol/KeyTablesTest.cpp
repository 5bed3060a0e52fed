// SPDX-License-Identifier: Apache-2.0
// The tables of keys in docs/exchanges.md against the records: which keys there are, their order, kinds and defaults.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace {

using namespace QorviViewPlugin_view_plugin_protocol;

// The names of all keys, at any depth.
template <class Record>
std::vector<std::string> NamesIn();

struct Key {
  Key(const char* key, Integer value) : name(key), kind("integer"), fallback(std::to_string(value)) {}
  Key(const char* key, Boolean value) : name(key), kind("boolean"), fallback(value ? "true" : "false") {}
  Key(const char* key, const Text& value) : name(key), kind("string"), fallback('"' + value + '"') {}
  template <class Record>
  Key(const char* key, const std::vector<Record>&)
      : name(key), kind("array"), fallback("[]"), inner(NamesIn<Record>()) {}
  template <class Record>
  Key(const char* key, const Record&) : name(key), kind("object"), inner(NamesIn<Record>()) {}

  std::string name, kind, fallback;
  std::vector<std::string> inner;  // of an object, or of an array's elements
};
using Keys = std::vector<Key>;

template <class Record>
Keys KeysOf() {
  const Record defaults{};
  Keys keys;
  QorviViewPlugin::ForEachField<Record>(
      [&](const auto& field) { keys.emplace_back(field.key, defaults.*field.member); });
  return keys;
}

template <class Record>
std::vector<std::string> NamesIn() {
  std::vector<std::string> names;
  for (const Key& key : KeysOf<Record>()) {
    names.push_back(key.name);
    names.insert(names.end(), key.inner.begin(), key.inner.end());
  }
  return names;
}

// The lines of the table with that head in that section of the document, without head and rule.
std::vector<std::string> Table(const std::string& section, const std::string& head) {
  std::ifstream file(EXCHANGES_DOCUMENT);
  const std::string document(std::istreambuf_iterator<char>(file), {});
  const size_t from = document.find(section);
  const size_t at = document.find("\n" + head, from);
  const size_t next = document.find("\n### ", from + 1);
  EXPECT_LT(from, document.size()) << section;
  if (at > next && head[2] != 'K') return {};
  std::istringstream lines(document.substr(at + 1));
  std::vector<std::string> rows;
  for (std::string line; std::getline(lines, line) && line[0] == '|';) rows.push_back(line);
  rows.erase(rows.begin(), rows.begin() + 2);
  return rows;
}

std::vector<std::string> Cells(const std::string& row) {
  std::vector<std::string> cells;
  std::istringstream stream(row.substr(1));
  for (std::string cell; std::getline(stream, cell, '|');) {
    cells.push_back(std::regex_replace(cell, std::regex("^ +| +$|\\*\\*"), ""));
  }
  return cells;
}

std::vector<std::string> Quoted(const std::string& text) {
  static const std::regex kName("\"([A-Za-z_]+)\"");
  std::vector<std::string> names;
  for (std::sregex_iterator at(text.begin(), text.end(), kName), end; at != end; ++at) names.push_back((*at)[1]);
  return names;
}

// Whether the names stand in the text, in that order.
bool Tells(const std::string& text, const std::vector<std::string>& names) {
  size_t at = 0;
  for (const std::string& name : names) {
    at = text.find('"' + name + '"', at);
    if (at == std::string::npos) return false;
    at += name.size() + 2;
  }
  return true;
}

void Compare(const std::string& section, const std::string& head, const Keys& keys) {
  const bool hasDefaults = head.find("Default") != std::string::npos;
  std::string expected, actual;
  for (const Key& key : keys) expected += key.name + ' ' + key.kind + (hasDefaults ? ' ' + key.fallback : "") + '\n';
  size_t index = 0;
  for (const std::string& row : Table(section, head)) {
    const auto cells = Cells(row);
    ASSERT_GE(cells.size(), hasDefaults ? 4u : 3u) << row;
    for (const std::string& name : Quoted(cells[0])) {
      actual += name + ' ' + cells[1] + (hasDefaults ? ' ' + cells[2] : "") + '\n';
      const bool isElsewhere = cells.back().find("[pages](") == 0 || cells.back() == "its windows";
      const bool isTold = isElsewhere || index >= keys.size() || Tells(cells.back(), keys[index].inner);
      EXPECT_TRUE(isTold) << section << row;
      ++index;
    }
  }
  EXPECT_EQ(actual, expected) << section << ": " << head;
}

template <class Request, class Response>
void CompareExchange(const std::string& name) {
  Compare("\n### " + name + "\n", "| Request key | Kind | Default | |", KeysOf<Request>());
  Compare("\n### " + name + "\n", "| Response key | Kind | |", KeysOf<Response>());
}

TEST(KeyTables, SayWhatTheRecordsSay) {
  CompareExchange<ClienInitViewDataRequest, ClienInitViewDataResponse>("IsInitViewGroupFinish, IsInitViewFinish");
  CompareExchange<GetPlanGroupsRequest, GetPlanGroupsResponse>("GetPlanGroups");
  CompareExchange<AddPlanGroupRequest, AddPlanGroupResponse>("AddPlanGroup");
  CompareExchange<UpdatePlanGroupRequest, UpdatePlanGroupResponse>("UpdatePlanGroup");
  CompareExchange<DeletePlanGroupRequest, DeletePlanGroupResponse>("DeletePlanGroup");
  CompareExchange<GetPlansInGroupRequest, GetPlansInGroupResponse>("GetPlansInGroup");
  CompareExchange<GetPlanDetailRequest, GetPlanDetailResponse>("GetPlanDetail");
  CompareExchange<AddPlanRequest, AddPlanResponse>("AddPlan");
  CompareExchange<UpdatePlanRequest, UpdatePlanResponse>("UpdatePlan");
  CompareExchange<DeletePlanResquest, DeletePlanResponse>("DeletePlan");
  CompareExchange<GetCurrentUserRequest, GetCurrentUserResponse>("GetCurrentUser");
  CompareExchange<UserRequestInfo, UserResponseInfo>("GetAllUserInfo");
  CompareExchange<ViewShareResquestInfo, ShareViewResponseInfo>("ViewShareUsers");
  CompareExchange<ClienDefaultViewConfigRequest, ClienDefaultViewConfigReponse>("SetClientViewConfig");
  CompareExchange<GetClientDefaultViewConfigRequest, GetClientDefaultViewConfigResponse>("GetClientViewConfig");
  // The response is told by its example alone, which a test of its own compares.
  Compare("\n### GetPlanConfig\n", "| Request key | Kind | Default | |", KeysOf<GetPlanConfigRequest>());
  Compare("\nA page:\n", "| Key | Kind | Default | |", KeysOf<PlanPage>());
  Compare("\nA window. ", "| Key | Kind | Default | |", KeysOf<PlanItem>());
}

}  // namespace
