// SPDX-License-Identifier: Apache-2.0
// What a client believes when exchanges and change streams go wrong, and how it comes right.

#include <algorithm>
#include <thread>

#include "../endtoend/ScriptClient.h"
#include "../server/TestClient.h"

namespace server::test {
namespace {

using ::test::Notice;
using ::test::ScriptClient;

constexpr int kGroupType = 16001;
const std::string kTop = "4294967295";

// Group 1 with the views 1 and 2, and group 2.
const char* const kSeed = R"({"ViewGroups":[{"ID":1,"Name":"G"},{"ID":2,"Name":"H"}],
    "Views":[{"ID":1,"Name":"V","ViewGroupID":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001}]}]},
             {"ID":2,"Name":"W","ViewGroupID":1}]})";

class ClientFaultsTest : public ServerTest {
 protected:
  void RestartWithRules(const std::string& rules) {
    ViewServerOptions options = Options();
    options.dataFile = ":memory:";
    options.seedFile = WriteFile("seed.json", kSeed);
    options.faultsFile = WriteFile("plan.json", R"({"Seed":5,"Rules":[)" + rules + "]}");
    m_server = std::make_unique<ViewServer>(options);
    m_server->Start();
    std::string error;
    for (const char* user : {"ann", "bob"}) EXPECT_TRUE(m_server->AddUser(user, "password", error)) << error;
    bob = LogIn("bob");
  }
  ScriptClient StartClient() const { return {m_server->Url(), "ann", "password"}; }

  // "G[V W] H[]": the public groups at the top with the names of their plans, sorted.
  static std::string Tree(ScriptClient& client) {
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
  // All that the client tells about what is in its cache.
  static std::string Everything(ScriptClient& client) {
    std::string text = Tree(client);
    for (const char* id : {"1", "2", "3", "4294967295"}) {
      text += client.Call("GetPlanDetail", R"({"ID":")" + std::string(id) + R"(","NeedResourceName":false})").text;
      text += client.Call("GetPlanGroups", R"({"ParentID":")" + std::string(id) + R"(","GroupType":0})").text;
    }
    return text + client.Call("GetPlansInGroup", R"({"GroupID":"-1","Type":0})").text;
  }
};

TEST_F(ClientFaultsTest, AnEditChangesTheCacheOnlyWhenItSucceedsAndALoadShowsWhatTookEffect) {
  const struct {
    const char *function, *request;
  } edits[] = {
      {"AddPlan", R"({"Name":"X","GroupID":"1","Type":0})"},
      {"AddPlanGroup", R"({"Name":"I","ParentID":"-1","Type":0})"},
      {"UpdatePlan", R"({"ID":"1","Name":"V2","GroupID":"1","Type":0})"},
      {"UpdatePlanGroup", R"({"ID":"1","Name":"G2"})"},
      {"DeletePlan", R"({"ID":"2"})"},
      {"DeletePlanGroup", R"({"ID":"2"})"},
  };
  const std::string before = "G[V W] H[]";
  const std::string after = "G2[V2 X] I[]";
  const struct {
    std::string fault;
    bool succeeds;
    std::string loaded;
  } cases[] = {
      {R"("Delay","Milliseconds":50)", true, after},
      {R"("DropBefore")", false, before},
      {R"("DropAfter")", false, after},
      {R"("Truncate")", false, after},
      {R"("EmptyBody")", false, after},
      {R"("MissingErrorCode")", false, after},
  };
  for (const auto& c : cases) {
    std::string rules;
    for (const char* method : {"POST", "PUT", "DELETE"}) {
      rules += std::string(rules.empty() ? "" : ",") + R"({"Path":"V0/View*","Method":")" + method + R"(","Fault":)" +
               c.fault + "}";
    }
    RestartWithRules(rules);
    ScriptClient client = StartClient();
    EXPECT_EQ(Tree(client), before);
    for (const auto& edit : edits) {
      const std::string known = Everything(client);
      const auto answer = client.Call(edit.function, edit.request);
      // An add that is answered with nothing at all fails without a word: the id tells.
      const bool isSilent = c.fault == R"("EmptyBody")" && std::string(edit.function).rfind("Add", 0) == 0;
      EXPECT_EQ(answer.result, c.succeeds || isSilent) << c.fault << ' ' << edit.function << ' ' << answer.text;
      if (isSilent) {
        EXPECT_EQ(answer.text, R"({"ErrorInfo":"","ID":"-1"})");
      }
      EXPECT_EQ(Everything(client) != known, c.succeeds) << c.fault << ' ' << edit.function;
    }
    EXPECT_EQ(Tree(client), c.succeeds ? after : before) << c.fault;
    const bool tookEffect = c.loaded == after;
    for (int tries = 0; tookEffect && tries < 200; ++tries) {  // the platform hears of the edits by the change stream
      client.Reload();
      if (Tree(client) == after) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    client.Reload();
    EXPECT_EQ(Tree(client), c.loaded) << c.fault;
  }
}

TEST_F(ClientFaultsTest, AnAnswerWithAWrongKindSomewhereIsTakenWholeOrNotAtAll) {
  RestartWithRules(R"({"Fault":"WrongKinds","Method":"PUT","Path":"V0/View*"})");
  ScriptClient client = StartClient();
  int taken = 0;
  for (int i = 0; i < 40; ++i) {
    const std::string known = Everything(client);
    const std::string name = "V" + std::to_string(i);
    const auto answer = client.Call("UpdatePlan", R"({"ID":"1","GroupID":"1","Type":0,"Name":")" + name + "\"}");
    EXPECT_EQ(Everything(client) != known, answer.result) << answer.text;
    taken += answer.result;
  }
  EXPECT_GT(taken, 5) << "what is no part of the outcome is not missed";
  EXPECT_LT(taken, 35);
}

TEST_F(ClientFaultsTest, AColleagueInBetweenWinsAndIsHeardOf) {
  RestartWithRules(R"({"Fault":"ColleagueEdit","Method":"PUT","Path":"V0/Views/#",
                       "Colleague":{"User":"bob","Method":"DELETE","Path":"V0/Views/#"}})");
  ScriptClient client = StartClient();
  client.Observe(kGroupType, "1");
  EXPECT_FALSE(client.Call("UpdatePlan", R"({"ID":"1","Name":"V2","GroupID":"1","Type":0})").result);
  EXPECT_EQ(client.NextNotice().childId, "1");
  EXPECT_EQ(Tree(client), "G[W] H[]");
}

TEST_F(ClientFaultsTest, ChangesThatComeTwiceLateOrInPartAreTakenOnceAndInOrder) {
  RestartWithRules(R"({"Fault":"DuplicateChange","Chance":0.3},{"Fault":"LateChange","Chance":0.2,"Milliseconds":30},
                      {"Fault":"TruncateChange","Chance":0.2},{"Fault":"StallStream","Chance":0.1,"Milliseconds":50})");
  ScriptClient client = StartClient();
  client.Observe(kGroupType, kTop);
  std::string expected;
  for (int i = 10; i < 40; ++i) {
    bob.AddGroup("G" + std::to_string(i), -1, kPublic);
    expected += "G" + std::to_string(i) + "[] ";
  }
  bob.Delete("V0/ViewGroups/2");
  for (int id = 3; id < 33; ++id) {
    const Notice notice = client.NextNotice();
    EXPECT_EQ(std::pair(notice.childId, notice.state), std::pair(std::to_string(id), 3));
  }
  const Notice last = client.NextNotice();
  EXPECT_EQ(std::pair(last.childId, last.state), std::pair(std::string("2"), 4));
  EXPECT_EQ(Tree(client), expected + "G[V W]");
}

}  // namespace
}  // namespace server::test
