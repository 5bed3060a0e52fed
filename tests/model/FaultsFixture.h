// SPDX-License-Identifier: Apache-2.0
// A server in the test's process with a small site and rules for what goes wrong, and clients of it that are processes
// of their own.
#pragma once

#include <algorithm>
#include <regex>

#include "../endtoend/ScriptClient.h"
#include "../server/TestClient.h"

namespace server::test {

constexpr int kViewType = 16000;
constexpr int kGroupType = 16001;
inline const std::string kTop = "4294967295";

class FaultsFixture : public ServerTest {
 protected:
  // `rules` are those of a fault plan.
  void RestartWithRules(const std::string& seed, const std::string& rules) {
    ViewServerOptions options = Options();
    options.dataFile = ":memory:";
    options.seedFile = WriteFile("seed.json", seed);
    options.faultsFile = WriteFile("plan.json", R"({"Seed":5,"Rules":[)" + rules + "]}");
    m_server = std::make_unique<ViewServer>(options);
    m_server->Start();
    std::string error;
    for (const char* user : {"ann", "bob"}) EXPECT_TRUE(m_server->AddUser(user, "password", error)) << error;
    bob = LogIn("bob");
  }
  ::test::ScriptClient StartClient() const { return {m_server->Url(), "ann", "password"}; }

  // "G[V W] H[]": the public groups at the top with the names of their plans, sorted.
  static std::string Tree(::test::ScriptClient& client) {
    std::vector<std::string> groups;
    const auto answer = client.Call("GetPlanGroups", R"({"ParentID":"-1","GroupType":0})");
    for (const auto& group : answer.response["PlanGroups"].GetArray()) {
      const std::string id = group["ID"].GetString();
      const auto plans = client.Call("GetPlansInGroup", R"({"GroupID":")" + id + R"(","Type":0})");
      std::string names;
      for (const auto& plan : plans.response["Plans"].GetArray()) {
        names += (names.empty() ? "" : " ") + std::string(plan["name"].GetString());
      }
      groups.push_back(std::string(group["Name"].GetString()) + "[" + names + "]");
    }
    std::sort(groups.begin(), groups.end());
    std::string tree;
    for (const std::string& group : groups) tree += (tree.empty() ? "" : " ") + group;
    return tree;
  }
  // What the client tells about what is in its cache, but for the plans that it lists by group, and without the
  // server's "GUID": answers to edits do not say it.
  static std::string Records(::test::ScriptClient& client) {
    std::string text;
    for (const char* id : {"1", "2", "3", "4", "4294967295"}) {
      text += client.Call("GetPlanDetail", R"({"ID":")" + std::string(id) + R"(","NeedResourceName":false})").text;
      text += client.Call("GetPlanGroups", R"({"ParentID":")" + std::string(id) + R"(","GroupType":0})").text;
    }
    text += client.Call("GetPlansInGroup", R"({"GroupID":"-1","Type":0})").text;
    return std::regex_replace(text, std::regex(R"("AppCode":"[^"]*")"), "");
  }
  static std::string Everything(::test::ScriptClient& client) { return Tree(client) + Records(client); }
};

}  // namespace server::test
