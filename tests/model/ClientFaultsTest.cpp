// SPDX-License-Identifier: Apache-2.0
// What a client believes when exchanges and change streams go wrong, and how it comes right.

#include <regex>
#include <set>

#include "../Cases.h"
#include "../endtoend/ScriptClient.h"
#include "../server/TestClient.h"

namespace server::test {
namespace {

using ::test::Notice;
using ::test::ScriptClient;

constexpr int kViewType = 16000;
constexpr int kGroupType = 16001;
const std::string kTop = "4294967295";

// Group 1 with the views 1 and 2, and group 2.
const char* const kSeed = R"({"Users":[{"ID":1,"Name":"ann","Password":"a"},{"ID":2,"Name":"bob","Password":"b"}],
    "ViewGroups":[{"ID":1,"Name":"G"},{"ID":2,"Name":"H"}],
    "Views":[{"ID":1,"Name":"V","ViewGroupID":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001}]}]},
             {"ID":2,"Name":"W","ViewGroupID":1}]})";

class ClientFaultsTest : public ServerTest {
 protected:
  // A client of a server with these rules of a fault plan.
  ScriptClient StartWithRules(const std::string& rules) {
    RestartWith([&](auto& options) {
      options.dataFile = ":memory:";
      options.seedFile = WriteFile("seed.json", kSeed);
      options.faultsFile = WriteFile("plan.json", R"({"Seed":5,"Rules":[)" + rules + "]}");
    });
    return {m_server->Url(), "ann", "a"};
  }

  // "G[V W] H[]": the public groups at the top with the names of their plans, sorted.
  static std::string Tree(ScriptClient& client) {
    std::set<std::string> groups;
    const auto answer = client.Call("GetPlanGroups", R"({"ParentID":"-1","GroupType":0})");
    for (const auto& group : answer.response["PlanGroups"].GetArray()) {
      const std::string id = group["ID"].GetString();
      const auto plans = client.Call("GetPlansInGroup", R"({"GroupID":")" + id + R"(","Type":0})");
      std::string names;
      for (const auto& plan : plans.response["Plans"].GetArray()) {
        names += (names.empty() ? "" : " ") + std::string(plan["name"].GetString());
      }
      groups.insert(std::string(group["Name"].GetString()) + "[" + names + "]");
    }
    std::string tree;
    for (const std::string& group : groups) tree += (tree.empty() ? "" : " ") + group;
    return tree;
  }
  // What the client tells about what is in its cache, but for the plans that it lists by group, and without the
  // server's "GUID": answers to edits do not say it.
  static std::string Records(ScriptClient& client) {
    std::string text;
    for (const std::string id : {"1", "2", "3", "4294967295"}) {
      text += client.Call("GetPlanDetail", R"({"ID":")" + id + R"(","NeedResourceName":false})").text;
      text += client.Call("GetPlanGroups", R"({"ParentID":")" + id + R"(","GroupType":0})").text;
    }
    text += client.Call("GetPlansInGroup", R"({"GroupID":"-1","Type":0})").text;
    return std::regex_replace(text, std::regex(R"("AppCode":"[^"]*")"), "");
  }

  static std::string Text(const Notice& notice) {
    const std::string what = notice.name + notice.childId;
    return notice.id + " " + std::to_string(notice.state) + (what.empty() ? "" : " " + what);
  }
};

TEST_F(ClientFaultsTest, AnEditIsCachedWhenItSucceedsAndHeardOfWhenItTookEffectAllTheSame) {
  // Each after those above it: the tree where it is cached with its answer, the tree where it is heard of, and as what.
  // A view that is told as changed is listed once more in its group.
  const auto edits = testing_support::Cases(EDITS);
  const std::string before = "G[V W] H[]";
  const std::string after = "G2[V2 X] I[]";
  enum Outcome { kSucceeds, kFails, kFailsButTakesEffect };
  const struct {
    std::string fault;
    Outcome outcome;
  } cases[] = {
      {R"("Delay","Milliseconds":50)", kSucceeds}, {R"("DropBefore")", kFails},
      {R"("DropAfter")", kFailsButTakesEffect},    {R"("Truncate")", kFailsButTakesEffect},
      {R"("EmptyBody")", kFailsButTakesEffect},    {R"("MissingErrorCode")", kFailsButTakesEffect},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault);
    std::string rules;
    for (const char* method : {"POST", "PUT", "DELETE"}) {
      rules += std::string(rules.empty() ? "" : ",") + R"({"Path":"V0/View*","Times":2,"Method":")" + method +
               R"(","Fault":)" + c.fault + "}";
    }
    ScriptClient client = StartWithRules(rules);
    for (const char* id : {kTop.c_str(), "1"}) client.Observe(kGroupType, id);
    client.Observe(kViewType, "1");
    EXPECT_EQ(Tree(client), before);
    for (const auto& [edit, expected] : edits) {
      SCOPED_TRACE(edit);
      const std::string known = Tree(client) + Records(client);
      const size_t blank = edit.find(' ');
      const auto answer = client.Call(edit.substr(0, blank), edit.substr(blank + 1));
      // An add that is answered with nothing at all fails without a word: the id tells.
      const bool isSilent = c.fault == R"("EmptyBody")" && edit.starts_with("Add");
      EXPECT_EQ(answer.result, c.outcome == kSucceeds || isSilent) << answer.text;
      if (isSilent) {
        EXPECT_EQ(answer.text, R"({"ErrorInfo":"","ID":"-1"})");
      }
      if (c.outcome == kSucceeds) {
        EXPECT_EQ(Tree(client), expected.at(0));
      } else if (c.outcome == kFails) {
        EXPECT_EQ(Tree(client) + Records(client), known);
      } else {
        EXPECT_EQ(Text(client.NextNotice()), expected.at(2));
        EXPECT_EQ(Tree(client), expected.at(1));
      }
    }
    const std::string records = Records(client);
    client.Reload();
    EXPECT_EQ(Tree(client), c.outcome == kFails ? before : after);
    EXPECT_EQ(Records(client), records);
    // Nothing has been told beside what was awaited.
    client.Observe(kGroupType, kTop);
    const int32_t last = bob.AddGroup("last", -1, kPublic);
    EXPECT_EQ(Text(client.NextNotice()), "4294967295 3 " + std::to_string(last));
  }
}

TEST_F(ClientFaultsTest, AnAnswerWithAWrongKindSomewhereIsTakenWholeOrNotAtAll) {
  ScriptClient client = StartWithRules(R"({"Fault":"WrongKinds","Method":"PUT","Path":"V0/View*"})");
  int taken = 0;
  for (int i = 0; i < 40; ++i) {
    const std::string name = "V" + std::to_string(i);
    const auto answer = client.Call("UpdatePlan", R"({"ID":"1","GroupID":"1","Type":0,"Name":")" + name + "\"}");
    const auto isCached = [&] { return Records(client).find(R"("Name":")" + name + '"') != std::string::npos; };
    // The server has taken them all: what is not cached with the answer is heard of.
    EXPECT_TRUE(isCached() || !answer.result) << answer.text;
    EXPECT_TRUE(Eventually(isCached)) << answer.text;
    taken += answer.result;
  }
  EXPECT_GT(taken, 5) << "what is no part of the outcome is not missed";
  EXPECT_LT(taken, 35);
}

TEST_F(ClientFaultsTest, AColleagueInBetweenWinsAndIsHeardOf) {
  ScriptClient client = StartWithRules(R"({"Fault":"ColleagueEdit","Method":"PUT","Path":"V0/Views/#",)"
                                       R"("Colleague":{"User":"bob","Method":"DELETE","Path":"V0/Views/#"}})");
  client.Observe(kGroupType, "1");
  EXPECT_FALSE(client.Call("UpdatePlan", R"({"ID":"1","Name":"V2","GroupID":"1","Type":0})").result);
  EXPECT_EQ(Text(client.NextNotice()), "1 4 1");
  EXPECT_EQ(Tree(client), "G[W] H[]");
}

TEST_F(ClientFaultsTest, ChangesThatComeTwiceLateOrInPartAreTakenOnceAndInOrder) {
  ScriptClient client = StartWithRules(
      R"({"Fault":"DuplicateChange","Chance":0.3},{"Fault":"LateChange","Chance":0.2,"Milliseconds":30},)"
      R"({"Fault":"TruncateChange","Chance":0.2},{"Fault":"StallStream","Chance":0.1,"Milliseconds":50})");
  client.Observe(kGroupType, kTop);
  std::string expected;
  for (int i = 10; i < 40; ++i) {
    bob.AddGroup("G" + std::to_string(i), -1, kPublic);
    expected += "G" + std::to_string(i) + "[] ";
  }
  bob.Delete("V0/ViewGroups/2");
  for (int id = 3; id < 33; ++id) EXPECT_EQ(Text(client.NextNotice()), kTop + " 3 " + std::to_string(id));
  EXPECT_EQ(Text(client.NextNotice()), kTop + " 4 2");
  EXPECT_EQ(Tree(client), expected + "G[V W]");
}

}  // namespace
}  // namespace server::test
