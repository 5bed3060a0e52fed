// SPDX-License-Identifier: Apache-2.0
#include <future>

#include "CallFixture.h"
#include "QorviViewPlugin/QorviViewPlugin.h"

namespace call_test {
namespace {

using QorviViewPlugin::kNoId;

std::string Plan(const std::string& name, const std::string& id, const std::string& parentId, int type,
                 const std::string& isShared = "false") {
  return R"({"name":")" + name + R"(","Remark":"","ID":")" + id + R"(","ParentID":")" + parentId + R"(","Type":)" +
         std::to_string(type) + R"(,"is_share_view":)" + isShared + "}";
}

class PlanCallsTest : public CallTest {};

TEST_F(PlanCallsTest, PlansInNoGroupAreListedByTypeInNaturalOrderAndNotCounted) {
  CacheView(1, "Gate 10", 1, kNoId);
  CacheView(2, "gate 9", 1, kNoId, true);
  CacheView(3, "Public", 0, kNoId);
  CacheView(4, "In a group", 1, 5);
  const std::string expected = R"(true {"ErrorInfo":"","Total":0,"Plans":[)" + Plan("gate 9", "2", "-1", 1, "true") +
                               "," + Plan("Gate 10", "1", "-1", 1) + "]}";
  for (const char* id : {"-1", "-2", "-4"}) {
    EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":")" + std::string(id) + R"(","Type":1})"), expected) << id;
  }
}

TEST_F(PlanCallsTest, AGroupListsAndCountsAllItsPlansWhateverTheirType) {
  CacheGroup(5, "group", 0, kNoId);
  CacheView(0xFFFFFFF0, "b", 1, 5);
  CacheView(2, "A", 0, 5);
  CacheView(3, "c", 2, 6);
  EXPECT_EQ(
      Call(GetPlansInGroup, R"({"GroupID":"5","Type":2})"),
      R"(true {"ErrorInfo":"","Total":2,"Plans":[)" + Plan("A", "2", "5", 0) + "," + Plan("b", "-16", "5", 1) + "]}");
  CacheGroup(6, "empty", 0, kNoId);
  EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":"6"})"), R"(true {"ErrorInfo":"","Total":0,"Plans":[]})");
}

TEST_F(PlanCallsTest, AnUnknownGroupFailsAndUnreadableIdsAskForGroupZero) {
  constexpr char kUnknown[] = R"(false {"ErrorInfo":"KaBeAUoxlQkKBOqwV","Total":0,"Plans":[]})";
  for (const char* id : {"7", "-3", "abc", ""}) {
    EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":")" + std::string(id) + "\"}"), kUnknown) << id;
  }
  CacheGroup(0, "zero", 0, kNoId);
  EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":"abc"})"), R"(true {"ErrorInfo":"","Total":0,"Plans":[]})");
}

TEST_F(PlanCallsTest, ListingWaitsForTheDownloadOnlyWhenAsked) {
  EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":"-1"})"), R"(true {"ErrorInfo":"","Total":0,"Plans":[]})");
  auto waiting =
      std::async(std::launch::async, Call, GetPlansInGroup, R"({"GroupID":"-1","resource_download_judge":true})");
  EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  Downloads().SetDownloadedData("", "", true);
  waiting.get();
}

// What a plan looks like to the server: "<group> <owner> <cycle> <time> <pages>".
std::string SentPlan(const std::string& body) {
  std::string text;
  for (const char* key : {"ViewGroupID", "UserID", "AutoCycle", "CycleTime", "Name"}) {
    text += At(body, std::string("/View/") + key) + " ";
  }
  return text + At(body, "/View/PlanPages[1]/SpliteType") + " " + At(body, "/View/PlanPages[2]/SpliteType");
}

TEST_F(PlanCallsTest, AddingSendsThePlanWithItsOwnerAndAnswersTheNewId) {
  const std::pair<std::string, std::string> cases[] = {
      {R"({"GroupID":"5","Name":"n","Type":0,"AutoCycle":1,"RoundTime":20,"OwnerId":"99",)"
       R"("PlanPages":[{"windowDivision":4},{"windowDivision":9}]})",
       "5 -1 1 20 n 4 9"},
      {R"({"GroupID":"-1","Type":1})", "-1 7 0 0  (none) (none)"},
      {R"({"GroupID":"-2","Type":2})", "-1 7 0 0  (none) (none)"},
      // Unlike the other calls this one does not read -4 as "in no group".
      {R"({"GroupID":"-4","Type":1})", "-4 7 0 0  (none) (none)"},
      {"{", "-1 -1 0 0  (none) (none)"},
  };
  server.Answer(Accepted(R"({"View":{"ID":4294967280}})"));
  for (const auto& [request, plan] : cases) {
    EXPECT_EQ(Call(AddPlan, request), R"(true {"ErrorInfo":"","ID":"-16"})");
    const SentRequest sent = Sent();
    EXPECT_EQ(sent.method + " " + sent.url, "POST /NXAPI/Vantorel/Platform/V0/Views");
    EXPECT_EQ(SentPlan(sent.body), plan) << request;
  }
}

TEST_F(PlanCallsTest, ChangingSendsThePlanAndMovesItInTheCache) {
  CacheGroup(5, "group", 0, kNoId);
  CacheView(3, "before", 1, 5);
  const std::pair<std::string, std::string> cases[] = {
      {"5", "5"}, {"-2", "-1"}, {"-1", "-1"}, {"-3", "-3"}, {"-4", "-1"}};
  server.Answer(Accepted());
  for (const auto& [groupId, sentId] : cases) {
    EXPECT_EQ(Call(UpdatePlan, R"({"ID":"3","Name":"after","Type":1,"AutoCycle":1,"RoundTime":20,"GroupID":")" +
                                   groupId + R"(","PlanPages":[{"windowDivision":4}],"is_share_view":true})"),
              R"(true {"ErrorInfo":""})");
    const SentRequest sent = Sent();
    EXPECT_EQ(sent.method + " " + sent.url, "PUT /NXAPI/Vantorel/Platform/V0/Views/3");
    EXPECT_EQ(SentPlan(sent.body), sentId + " 7 1 20 after 4 (none)");
    EXPECT_EQ(At(sent.body, "/View/ID"), "3");
    EXPECT_EQ(At(sent.body, "/View/SharedUserID"), "1");
  }
  EXPECT_TRUE(Members(5).empty());
  EXPECT_EQ(ViewName(3), "after");

  EXPECT_EQ(Call(UpdatePlan, R"({"ID":"3","Type":0})"), R"(true {"ErrorInfo":""})");
  EXPECT_EQ(At(Sent().body, "/View/UserID"), "-1");
}

}  // namespace
}  // namespace call_test
