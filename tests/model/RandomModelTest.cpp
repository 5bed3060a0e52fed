// SPDX-License-Identifier: Apache-2.0
// Two clients edit one site at random; after each turn both caches must hold what the documented rules predict.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <thread>

#include "CacheModel.h"
#include "ScriptClient.h"
#include "server/ViewServer.h"

namespace {

constexpr int kGroupType = 16001;
constexpr int kTurns = 400;
constexpr int kEditsPerTurn = 8;
constexpr int kTurnsPerComparison = 5;

uint32_t Seed() {
  const char* const fixed = std::getenv("RANDOM_MODEL_SEED");
  return fixed ? static_cast<uint32_t>(std::strtoul(fixed, nullptr, 10)) : std::random_device()();
}

std::string Text(const rapidjson::Value& object, const char* key) {
  const auto member = object.FindMember(key);
  return member != object.MemberEnd() && member->value.IsString() ? member->value.GetString() : "<none>";
}

int Number(const rapidjson::Value& object, const char* key) {
  const auto member = object.FindMember(key);
  return member != object.MemberEnd() && member->value.IsInt() ? member->value.GetInt() : -99;
}

const rapidjson::Value& List(const rapidjson::Value& object, const char* key) {
  static const rapidjson::Value kEmpty(rapidjson::kArrayType);
  const auto member = object.FindMember(key);
  return member != object.MemberEnd() && member->value.IsArray() ? member->value : kEmpty;
}

std::string Pages(size_t windows) {
  std::string items;
  for (size_t w = 0; w < windows; ++w) {
    items += std::string(w ? "," : "") + R"({"Sequence":)" + std::to_string(w) +
             R"(,"ResourceType":1001,"ResourceID":"2001","SiteID":"1","WindowNo":)" + std::to_string(w) + "}";
  }
  return R"([{"windowDivision":4,"PlanItems":[)" + items + "]}]";
}

// One user at one client, with what the client's cache must hold.
struct Player {
  Player(const std::string& url, const std::string& name, const std::string& password)
      : client(url, name, password), model(0) {
    const auto answer = client.Call("GetCurrentUser", "{}");
    user = Number(answer.response, "user_id");
    model = CacheModel(user);
  }

  ScriptClient client;
  CacheModel model;
  Id user = kNone;
};

class RandomModelTest : public ::testing::Test {
 protected:
  RandomModelTest() : m_server(Options()), m_seed(Seed()), m_random(m_seed) {
    std::string error;
    EXPECT_TRUE(m_server.AddUser("first", "first password", error)) << error;
    EXPECT_TRUE(m_server.AddUser("second", "second password", error)) << error;
    m_server.Start();
    m_players.push_back(std::make_unique<Player>(m_server.Url(), "first", "first password"));
    m_players.push_back(std::make_unique<Player>(m_server.Url(), "second", "second password"));
    std::cout << "seed " << m_seed << std::endl;
  }

  static server::ViewServerOptions Options() {
    server::ViewServerOptions options;
    options.dataFile = ":memory:";
    return options;
  }

  size_t Below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(m_random); }
  bool Chance(int percent) { return Below(100) < static_cast<size_t>(percent); }
  std::string Name() { return "n" + std::to_string(Below(40)) + (Chance(20) ? " \u00e9\u6f22\"\\" : ""); }
  Player& Other(Player& player) { return player.user == m_players[0]->user ? *m_players[1] : *m_players[0]; }

  template <class Record>
  std::optional<Record> Pick(Player& player, const std::map<Id, Record>& records) {
    std::vector<Record> visible;
    for (const auto& [id, record] : records) {
      if (id != m_marker && player.model.Sees(record.owner)) visible.push_back(record);
    }
    if (visible.empty()) return std::nullopt;
    return visible[Below(visible.size())];
  }

  // A folder for content of that owner, or none.
  Id PickFolder(Id owner) {
    std::vector<Id> fitting(1, kNone);
    for (const auto& [id, group] : m_truth.groups) {
      if (id != m_marker && group.owner == owner) fitting.push_back(id);
    }
    return fitting[Below(fitting.size())];
  }

  void AddGroup(Player& player) {
    GroupRecord group;
    group.owner = Chance(60) ? kPublic : player.user;
    group.parent = PickFolder(group.owner);
    group.name = Name();
    const auto answer = player.client.Call("AddPlanGroup", R"({"Name":)" + Quoted(group.name) + R"(,"ParentID":")" +
                                                               std::to_string(group.parent) + R"(","Type":)" +
                                                               (group.owner == kPublic ? "0" : "1") + "}");
    ASSERT_TRUE(answer.result) << Text(answer.response, "ErrorInfo");
    group.id = std::stoll(Text(answer.response, "ID"));
    m_truth.groups[group.id] = group;
    player.model.OwnGroupAdded(group);
    Other(player).model.GroupAdded(group);
  }

  void RenameGroup(Player& player) {
    const auto picked = Pick(player, m_truth.groups);
    if (!picked) return;
    GroupRecord& group = m_truth.groups[picked->id];
    group.name = Name();
    const auto answer = player.client.Call(
        "UpdatePlanGroup", R"({"Name":)" + Quoted(group.name) + R"(,"ID":")" + std::to_string(group.id) + R"("})");
    ASSERT_TRUE(answer.result) << Text(answer.response, "ErrorInfo");
    player.model.OwnGroupRenamed(group.id, group.name);
    Other(player).model.GroupModified(group);
  }

  void DeleteGroup(Player& player) {
    const auto picked = Pick(player, m_truth.groups);
    if (!picked) return;
    const auto answer = player.client.Call("DeletePlanGroup", R"({"ID":")" + std::to_string(picked->id) + R"("})");
    ASSERT_TRUE(answer.result) << Text(answer.response, "ErrorInfo");
    player.model.OwnGroupRemoved(picked->id);
    // What the group held goes first, deepest first, and its removal is news to both.
    for (const Id groupId : m_truth.WithDescendants(picked->id)) {
      const GroupRecord group = m_truth.groups.at(groupId);
      for (auto view = m_truth.views.begin(); view != m_truth.views.end();) {
        if (view->second.group != groupId) {
          ++view;
          continue;
        }
        for (const auto& each : m_players) each->model.ViewRemoved(view->second);
        view = m_truth.views.erase(view);
      }
      if (groupId != picked->id) player.model.GroupRemoved(group);
      Other(player).model.GroupRemoved(group);
      m_truth.groups.erase(groupId);
    }
  }

  std::string PlanRequest(const ViewRecord& view, const std::string& id) {
    return "{" + id + R"("GroupID":")" + std::to_string(view.group) + R"(","Name":)" + Quoted(view.name) +
           R"(,"Type":)" + (view.owner == kPublic ? "0" : "1") + R"(,"RoundTime":)" + std::to_string(view.cycleTime) +
           R"(,"PlanPages":)" + Pages(view.windows) + "}";
  }

  void AddView(Player& player) {
    ViewRecord view;
    view.owner = Chance(60) ? kPublic : player.user;
    view.group = PickFolder(view.owner);
    view.name = Name();
    view.cycleTime = static_cast<int>(Below(100));
    view.windows = 1 + Below(4);
    const auto answer = player.client.Call("AddPlan", PlanRequest(view, ""));
    ASSERT_TRUE(answer.result) << Text(answer.response, "ErrorInfo");
    view.id = std::stoll(Text(answer.response, "ID"));
    m_truth.views[view.id] = view;
    player.model.OwnViewAdded(view);
    Other(player).model.ViewAdded(view);
  }

  void ModifyView(Player& player) {
    const auto picked = Pick(player, m_truth.views);
    if (!picked) return;
    ViewRecord& view = m_truth.views[picked->id];
    if (Chance(50)) view.name = Name();
    if (Chance(40)) view.group = PickFolder(view.owner);
    view.cycleTime = static_cast<int>(Below(100));
    view.windows = 1 + Below(4);
    const auto answer =
        player.client.Call("UpdatePlan", PlanRequest(view, R"("ID":")" + std::to_string(view.id) + R"(",)"));
    ASSERT_TRUE(answer.result) << Text(answer.response, "ErrorInfo");
    player.model.OwnViewModified(view);
    Other(player).model.ViewModified(view);
  }

  void DeleteView(Player& player) {
    const auto picked = Pick(player, m_truth.views);
    if (!picked) return;
    const auto answer = player.client.Call("DeletePlan", R"({"ID":")" + std::to_string(picked->id) + R"("})");
    ASSERT_TRUE(answer.result) << Text(answer.response, "ErrorInfo");
    player.model.OwnViewRemoved(picked->id);
    Other(player).model.ViewRemoved(*picked);
    m_truth.views.erase(picked->id);
  }

  // An edit that the server must refuse; no cache may change.
  void RefusedEdit(Player& player) {
    const std::string missing = R"({"ID":"4000000","Name":"x"})";
    const std::vector<std::pair<std::string, std::string>> edits = {
        {"AddPlan", R"({"Name":"","GroupID":"-1"})"},
        {"AddPlan", R"({"Name":"x","GroupID":"4000000"})"},
        {"AddPlanGroup", R"({"Name":"a\u0001b","ParentID":"-1"})"},
        {"AddPlanGroup", R"({"Name":"x","ParentID":"4000000"})"},
        {"UpdatePlan", missing},
        {"DeletePlan", missing},
        {"UpdatePlanGroup", missing},
        {"DeletePlanGroup", missing}};
    const auto& [function, request] = edits[Below(edits.size())];
    EXPECT_FALSE(player.client.Call(function, request).result) << function << request;
  }

  void Edit(Player& player) {
    const size_t dice = Below(100);
    if (dice < 18) return AddGroup(player);
    if (dice < 28) return RenameGroup(player);
    if (dice < 33) return DeleteGroup(player);
    if (dice < 60) return AddView(player);
    if (dice < 85) return ModifyView(player);
    if (dice < 95) return DeleteView(player);
    RefusedEdit(player);
  }

  // Renames the marker group and waits until the other client has heard of it, hence of all that came before.
  void AwaitOther(Player& player) {
    const std::string name = "marker " + std::to_string(++m_markerCount);
    const std::string id = std::to_string(m_marker);
    ASSERT_TRUE(player.client.Call("UpdatePlanGroup", R"({"Name":")" + name + R"(","ID":")" + id + R"("})").result);
    GroupRecord& marker = m_truth.groups[m_marker];
    marker.name = name;
    player.model.OwnGroupRenamed(m_marker, name);
    Other(player).model.GroupModified(marker);
    Other(player).client.AwaitNotice(id, name);
  }

  void MakeMarker() {
    Player& player = *m_players[0];
    const auto answer = player.client.Call("AddPlanGroup", R"({"Name":"marker","ParentID":"-1","Type":0})");
    ASSERT_TRUE(answer.result);
    GroupRecord marker;
    marker.id = m_marker = std::stoll(Text(answer.response, "ID"));
    marker.name = "marker";
    m_truth.groups[m_marker] = marker;
    player.model.OwnGroupAdded(marker);
    Other(player).model.GroupAdded(marker);
    // Until the second client has heard of the group, its rename would be no notice to it.
    for (int tries = 0; tries < 1000; ++tries) {
      const auto groups = Other(player).client.Call("GetPlanGroups", R"({"ParentID":"-1","GroupType":0})");
      if (List(groups.response, "PlanGroups").Size() == 1) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    for (const auto& each : m_players) each->client.Observe(kGroupType, std::to_string(m_marker));
  }

  void ExpectGroups(Player& player, Id parent, int type) {
    const auto answer = player.client.Call("GetPlanGroups", R"({"ParentID":")" + std::to_string(parent) +
                                                                R"(","GroupType":)" + std::to_string(type) + "}");
    std::vector<std::tuple<std::string, Id>> listed;
    for (const auto& group : List(answer.response, "PlanGroups").GetArray()) {
      listed.emplace_back(Text(group, "Name"), std::stoll(Text(group, "ID")));
    }
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, player.model.ChildGroups(parent, type == 0 ? kPublic : player.user));
  }

  void ExpectPlans(Player& player, Id group, int type, const std::vector<CacheModel::Listed>& expected) {
    const auto answer = player.client.Call(
        "GetPlansInGroup", R"({"GroupID":")" + std::to_string(group) + R"(","Type":)" + std::to_string(type) + "}");
    std::vector<CacheModel::Listed> listed;
    for (const auto& plan : List(answer.response, "Plans").GetArray()) {
      listed.emplace_back(Text(plan, "name"), std::stoll(Text(plan, "ID")), std::stoll(Text(plan, "ParentID")),
                          Number(plan, "Type"));
    }
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, expected) << "group " << group;
  }

  void ExpectDetail(Player& player, Id id) {
    const ViewRecord& view = player.model.View(id);
    const auto answer =
        player.client.Call("GetPlanDetail", R"({"ID":")" + std::to_string(id) + R"(","NeedResourceName":false})");
    EXPECT_TRUE(answer.result);
    EXPECT_EQ(Text(answer.response, "Name"), view.name);
    EXPECT_EQ(Text(answer.response, "GroupID"), std::to_string(view.group));
    EXPECT_EQ(Number(answer.response, "RoundTime"), view.cycleTime);
    const auto& pages = List(answer.response, "PlanPages");
    ASSERT_EQ(pages.Size(), 1u);
    EXPECT_EQ(List(pages[0], "PlanItems").Size(), view.windows);
  }

  void ExpectCacheAsPredicted(Player& player) {
    for (int type : {0, 1}) {
      ExpectGroups(player, kNone, type);
      ExpectPlans(player, kNone, type, player.model.WithoutGroup(type));
    }
    for (const Id group : player.model.GroupIds()) {
      for (int type : {0, 1}) ExpectGroups(player, group, type);
      ExpectPlans(player, group, 0, player.model.Members(group));
    }
    for (const Id view : player.model.ViewIds()) ExpectDetail(player, view);
  }

  server::ViewServer m_server;
  uint32_t m_seed;
  std::mt19937 m_random;
  std::vector<std::unique_ptr<Player>> m_players;
  Truth m_truth;
  Id m_marker = kNone;
  int m_markerCount = 0;
};

TEST_F(RandomModelTest, BothCachesHoldWhatTheRulesPredict) {
  MakeMarker();
  int edits = 0;
  for (int turn = 0; turn < kTurns && !HasFailure(); ++turn) {
    Player& player = *m_players[Below(2)];
    for (size_t left = 1 + Below(kEditsPerTurn); left > 0 && !HasFailure(); --left, ++edits) Edit(player);
    AwaitOther(player);
    // A removed folder's content is news to the editor too.
    AwaitOther(Other(player));
    if (turn % kTurnsPerComparison != 0 && turn != kTurns - 1) continue;
    for (const auto& each : m_players) ExpectCacheAsPredicted(*each);
    ASSERT_FALSE(HasFailure()) << "turn " << turn << ", seed " << m_seed << " (RANDOM_MODEL_SEED repeats it)";
  }
  std::cout << edits << " edits, " << m_truth.groups.size() << " groups and " << m_truth.views.size()
            << " views at the end" << std::endl;
}

}  // namespace
