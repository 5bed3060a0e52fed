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
  const char *function, *request, *method, *path;
  const char* colleaguesPath;
  const char* madeName;    // what is so called has been made by the edit; null where nothing is
  const char* unmadeName;  // what is so called has been unmade by the edit
};
enum class Colleague { Changes, Deletes };
enum class HeldBack { Stream, Answer };
struct Crossing {
  OwnEdit own;
  Colleague colleague;
  HeldBack heldBack;
};

class CrossingEditsTest : public FaultsFixture, public ::testing::WithParamInterface<Crossing> {
 protected:
  static const char* List() { return GetParam().own.colleaguesPath; }
  static bool IsAdd() { return std::string(GetParam().own.method) == "POST"; }

  static std::string Rule(int milliseconds) {
    const OwnEdit& own = GetParam().own;
    const std::string time = R"("Times":1,"Milliseconds":)" + std::to_string(milliseconds);
    if (GetParam().heldBack == HeldBack::Stream) return R"({"Fault":"LateChange",)" + time + "}";
    return R"({"Fault":"Delay","Method":")" + std::string(own.method) + R"(","Path":")" + own.path + "\"," + time + "}";
  }

  // The colleague changes or deletes it, if it is there.
  void EditAsColleague() {
    const std::string list = List();
    const bool isView = list == "V0/Views/";
    const std::string path = list + (IsAdd() ? NewId() : isView ? "1" : "2");
    if (GetParam().colleague == Colleague::Deletes) {
      bob.Delete(path);
    } else {
      bob.Put(path, isView ? ViewBody("bob's", 1, kPublic, R"(,"PlanPages":[{"PlanViewItem":[{},{}]}])")
                           : GroupBody("bob's", -1, kPublic));
    }
  }
  void RenameMarker(const std::string& name) {
    ASSERT_EQ(bob.Put("V0/ViewGroups/3", GroupBody(name, -1, kPublic)).status, 200);
  }

  std::string Listed() const { return bob.Get(std::string(List(), std::string(List()).size() - 1)).body; }
  // Until the user's edit has taken effect.
  void AwaitEffect() const {
    const auto holds = [&](const char* name) {
      return Listed().find(R"("Name":")" + std::string(name) + '"') != std::string::npos;
    };
    const OwnEdit& own = GetParam().own;
    for (int tries = 0; tries < 4000; ++tries) {
      if (own.madeName ? holds(own.madeName) : !holds(own.unmadeName)) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    FAIL() << "the edit has not come to the server";
  }
  std::string NewId() const {
    const std::string ids = std::string(List()) == "V0/Views/" ? bob.ViewIds() : bob.GroupIds();
    return ids.substr(ids.rfind(',') + 1);
  }

  bool Cross(int milliseconds);

  // The plans that the client lists by group and those of one that has just loaded: none may be missing, and what is
  // there beside them is an object that was changed or deleted since, listed once more.
  static void ExpectListsOf(ScriptClient& client, ScriptClient& fresh) {
    for (const char* group : {"1", "2", "3", "4"}) {
      const std::string request = R"({"GroupID":")" + std::string(group) + R"(","Type":0})";
      const auto right = fresh.Call("GetPlansInGroup", request);
      const auto listed = client.Call("GetPlansInGroup", request);
      ASSERT_EQ(listed.result, right.result) << listed.text;
      std::multiset<std::pair<std::string, std::string>> plans;
      std::set<std::string> ids;
      for (const auto& plan : host::ListOf(listed.response, "Plans").GetArray()) {
        plans.emplace(host::TextOf(plan, "ID"), host::TextOf(plan, "name"));
      }
      for (const auto& plan : host::ListOf(right.response, "Plans").GetArray()) {
        ids.insert(host::TextOf(plan, "ID"));
        EXPECT_GT(plans.count({host::TextOf(plan, "ID"), host::TextOf(plan, "name")}), 0u) << listed.text;
      }
      for (const auto& [id, name] : plans) {
        EXPECT_TRUE(ids.count(id) > 0 || !client.Call("GetPlanDetail", R"({"ID":")" + id + R"("})").result)
            << "view " << id << " in group " << group;
      }
    }
  }
};

// Whether what was held back so long did come last.
bool CrossingEditsTest::Cross(int milliseconds) {
  const auto& [own, colleague, heldBack] = GetParam();
  RestartWithRules(kSeed, Rule(milliseconds));
  ScriptClient client = StartClient();
  client.Observe(kGroupType, "3");
  // The colleague's change has the lower number where the stream is held back, but for what is only made by the edit.
  const bool isColleagueFirst = heldBack == HeldBack::Stream && !IsAdd();
  if (isColleagueFirst) {
    EditAsColleague();
    RenameMarker("between");
  }
  client.Begin(own.function, own.request);
  bool crossed = true;
  const auto finish = [&] {
    const auto answer = client.Finish();
    EXPECT_EQ(answer.result, !isColleagueFirst || colleague == Colleague::Changes) << answer.text;
    crossed = client.HasNotices() == (heldBack == HeldBack::Answer);
  };
  if (heldBack == HeldBack::Stream) finish();
  if (!isColleagueFirst) {
    AwaitEffect();
    EditAsColleague();
    RenameMarker("between");
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

TEST_P(CrossingEditsTest, EndAsOnTheServerInEveryOrder) {
  for (const int milliseconds : {150, 1000, 5000}) {
    if (Cross(milliseconds) || HasFailure()) return;
  }
  FAIL() << "what was held back came first all the same";
}

std::vector<Crossing> AllCrossings() {
  const OwnEdit edits[] = {
      {"UpdatePlan",
       R"({"ID":"1","Name":"ann's","GroupID":"1","Type":0,"PlanPages":[{"PlanItems":[{"Emap":{"LoadMode":1}}]}]})",
       "PUT", "V0/Views/#", "V0/Views/", "ann's", nullptr},
      {"DeletePlan", R"({"ID":"1"})", "DELETE", "V0/Views/#", "V0/Views/", nullptr, "V"},
      {"AddPlan", R"({"Name":"ann's","GroupID":"1","Type":0,"PlanPages":[{"PlanItems":[{"Emap":{"LoadMode":1}}]}]})",
       "POST", "V0/Views", "V0/Views/", "ann's", nullptr},
      {"UpdatePlanGroup", R"({"ID":"2","Name":"ann's"})", "PUT", "V0/ViewGroups/#", "V0/ViewGroups/", "ann's", nullptr},
      {"DeletePlanGroup", R"({"ID":"2"})", "DELETE", "V0/ViewGroups/#", "V0/ViewGroups/", nullptr, "H"},
      {"AddPlanGroup", R"({"Name":"ann's","ParentID":"-1","Type":0})", "POST", "V0/ViewGroups", "V0/ViewGroups/",
       "ann's", nullptr},
  };
  std::vector<Crossing> all;
  for (const OwnEdit& own : edits) {
    for (const Colleague colleague : {Colleague::Changes, Colleague::Deletes}) {
      for (const HeldBack heldBack : {HeldBack::Stream, HeldBack::Answer}) all.push_back({own, colleague, heldBack});
    }
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(All, CrossingEditsTest, ::testing::ValuesIn(AllCrossings()), [](const auto& run) {
  const Crossing& crossing = run.param;
  return std::string(crossing.own.function) + (crossing.colleague == Colleague::Changes ? "Changed" : "Deleted") +
         (crossing.heldBack == HeldBack::Stream ? "StreamHeldBack" : "AnswerHeldBack");
});

}  // namespace
}  // namespace server::test
