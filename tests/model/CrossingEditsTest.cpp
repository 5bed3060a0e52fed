// SPDX-License-Identifier: Apache-2.0
// The user and a colleague edit the same thing, and of what the client is told, the answer to its own edit and the
// colleague's change, the earlier comes after the later. Whatever the order, the client ends with what the server has.

#include <chrono>
#include <set>
#include <thread>

#include "FaultsFixture.h"

namespace server::test {
namespace {

using ::test::ScriptClient;

// Group 1 with view 1, the empty group 2, and group 3, whose renamings tell what has been heard.
const char* const kSeed = R"({"ViewGroups":[{"ID":1,"Name":"G"},{"ID":2,"Name":"H"},{"ID":3,"Name":"M"}],
    "Views":[{"ID":1,"Name":"V","ViewGroupID":1,"PlanPages":[{"PlanViewItem":[{"ResourceType":1001}]}]}]})";

struct OwnEdit {
  std::string function, request;
  std::string method, path;
  std::string colleaguesPath;
};
enum class Colleague { Changes, Deletes };
enum class HeldBack { Stream, Answer };

class CrossingEditsTest : public FaultsFixture {
 protected:
  bool Cross(const OwnEdit& own, Colleague colleague, HeldBack heldBack, int milliseconds);

  void RenameMarker(const std::string& name) {
    ASSERT_EQ(bob.Put("V0/ViewGroups/3", GroupBody(name, -1, kPublic)).status, 200);
  }

  // The plans that the client lists by group and those of one that has just loaded: none may be missing, and what is
  // there beside them is an object that was changed or deleted since, listed once more.
  static void ExpectListsOf(ScriptClient& client, ScriptClient& fresh) {
    for (const char* group : {"1", "2", "3", "4"}) {
      std::set<std::string> ids;
      const std::set<Plan> listed = Plans(client, group);
      for (const Plan& plan : Plans(fresh, group)) {
        ids.insert(plan.first);
        EXPECT_EQ(listed.count(plan), 1u) << "view " << plan.first << " in group " << group;
      }
      for (const auto& [id, name] : listed) {
        EXPECT_TRUE(ids.count(id) > 0 || !client.Call("GetPlanDetail", R"({"ID":")" + id + R"("})").result)
            << "view " << id << " in group " << group;
      }
    }
  }

 private:
  using Plan = std::pair<std::string, std::string>;  // id, name
  static std::set<Plan> Plans(ScriptClient& client, const std::string& group) {
    const auto answer = client.Call("GetPlansInGroup", R"({"GroupID":")" + group + R"(","Type":0})");
    std::set<Plan> plans;
    if (!answer.result) plans.emplace("none", answer.text);
    for (const auto& plan : host::ListOf(answer.response, "Plans").GetArray()) {
      plans.emplace(host::TextOf(plan, "ID"), host::TextOf(plan, "name"));
    }
    return plans;
  }
};

// Whether what was held back so long did come last.
bool CrossingEditsTest::Cross(const OwnEdit& own, Colleague colleague, HeldBack heldBack, int milliseconds) {
  const std::string time = R"("Times":1,"Milliseconds":)" + std::to_string(milliseconds) + "}";
  const std::string late = R"({"Fault":"Delay","Method":")" + own.method + R"(","Path":")" + own.path + "\",";
  RestartWithRules(kSeed, (heldBack == HeldBack::Stream ? R"({"Fault":"LateChange",)" : late) + time);
  ScriptClient client = StartClient();
  client.Observe(kGroupType, "3");
  const auto editAsColleague = [&] {
    if (colleague == Colleague::Deletes) {
      bob.Delete(own.colleaguesPath);
    } else {
      const bool isView = own.colleaguesPath.rfind("V0/Views/", 0) == 0;
      bob.Put(own.colleaguesPath, isView ? ViewBody("bob's", 1, kPublic, R"(,"PlanPages":[{"PlanViewItem":[{},{}]}])")
                                         : GroupBody("bob's", -1, kPublic));
    }
    RenameMarker("between");
  };
  // The colleague's change has the lower number where the stream is held back, but for what is only made by the edit.
  const bool isColleagueFirst = heldBack == HeldBack::Stream && own.method != "POST";
  if (isColleagueFirst) editAsColleague();
  const int64_t before = bob.Sequence();
  client.Begin(own.function, own.request);
  bool crossed = true;
  const auto finish = [&] {
    const auto answer = client.Finish();
    EXPECT_EQ(answer.result, !isColleagueFirst || colleague == Colleague::Changes) << answer.text;
    crossed = client.HasNotices() == (heldBack == HeldBack::Answer);
  };
  if (heldBack == HeldBack::Stream) finish();
  if (!isColleagueFirst) {
    for (int tries = 0; bob.Sequence() == before && tries < 4000; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_GT(bob.Sequence(), before) << "the edit has not come to the server";
    editAsColleague();
  }
  if (heldBack == HeldBack::Answer) finish();
  RenameMarker("end");
  while (client.NextNotice().name != "end") {
  }
  ScriptClient fresh = StartClient();
  EXPECT_EQ(Records(client), Records(fresh));
  ExpectListsOf(client, fresh);
  return crossed;
}

TEST_F(CrossingEditsTest, EndAsOnTheServerInEveryOrder) {
  const std::string view =
      R"("Name":"ann's","GroupID":"1","Type":0,"PlanPages":[{"PlanItems":[{"Emap":{"LoadMode":1}}]}]})";
  const OwnEdit edits[] = {
      {"UpdatePlan", R"({"ID":"1",)" + view, "PUT", "V0/Views/#", "V0/Views/1"},
      {"DeletePlan", R"({"ID":"1"})", "DELETE", "V0/Views/#", "V0/Views/1"},
      {"AddPlan", "{" + view, "POST", "V0/Views", "V0/Views/2"},
      {"UpdatePlanGroup", R"({"ID":"2","Name":"ann's"})", "PUT", "V0/ViewGroups/#", "V0/ViewGroups/2"},
      {"DeletePlanGroup", R"({"ID":"2"})", "DELETE", "V0/ViewGroups/#", "V0/ViewGroups/2"},
      {"AddPlanGroup", R"({"Name":"ann's","ParentID":"-1","Type":0})", "POST", "V0/ViewGroups", "V0/ViewGroups/4"},
  };
  for (const OwnEdit& own : edits) {
    for (const Colleague colleague : {Colleague::Changes, Colleague::Deletes}) {
      for (const HeldBack heldBack : {HeldBack::Stream, HeldBack::Answer}) {
        SCOPED_TRACE(own.function + (colleague == Colleague::Changes ? ", changed, " : ", deleted, ") +
                     (heldBack == HeldBack::Stream ? "stream held back" : "answer held back"));
        bool hasCrossed = false;
        for (const int milliseconds : {150, 1000, 5000}) {
          hasCrossed = hasCrossed || Cross(own, colleague, heldBack, milliseconds);
        }
        EXPECT_TRUE(hasCrossed) << "what was held back came first all the same";
      }
    }
  }
}

}  // namespace
}  // namespace server::test
