// SPDX-License-Identifier: Apache-2.0
#include <future>

#include "CallFixture.h"
#include "QorviViewPlugin/FirstLoad.h"

namespace call_test {
namespace {

class PlanCallsTest : public CallTest {};

TEST_F(PlanCallsTest, PlansInNoGroupAreListedByTypeInNaturalOrderAndNotCounted) {
  CacheView(View(1, kNoId, "Gate 10", 1));
  auto shared = View(2, kNoId, "gate 9", 1);
  shared.bShared = true;
  CacheView(shared);
  CacheView(View(3, kNoId, "Public", 0));
  CacheView(View(4, 5, "In a group", 1));
  ExpectAnswers();
}

TEST_F(PlanCallsTest, AGroupListsAndCountsAllItsPlansWhateverTheirType) {
  CacheGroup(Group(5));
  CacheView(View(0xFFFFFFF0, 5, "b", 1));
  CacheView(View(2, 5, "A", 0));
  CacheView(View(3, 6, "c", 2));
  ExpectAnswers();
}

TEST_F(PlanCallsTest, AnUnknownGroupFailsAndUnreadableIdsAskForGroupZero) {
  ExpectAnswers();
  CacheGroup(Group(0));
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

// What a plan looks like to the server: "<method and URL> <group> <owner> <cycle> <time> <name> <pages>".
std::string SentPlan(const std::string& sent) {
  std::string text = sent.substr(0, sent.find('{'));
  for (const char* key : {"ViewGroupID", "UserID", "AutoCycle", "CycleTime", "Name", "SharedUserID",
                          "PlanPages[1]/SpliteType", "PlanPages[2]/SpliteType"}) {
    text += At(sent, std::string("/View/") + key) + " ";
  }
  text.pop_back();
  return text;
}

TEST_F(PlanCallsTest, AddingSendsThePlanWithItsOwnerAndAnswersTheNewId) {
  server.Answer(Accepted(R"({"View":{"ID":4294967280}})"));
  // Unlike the other calls this one does not read -4 as "in no group".
  for (const auto& [request, plan] : testing_support::Cases(CALL_TEXTS)) {
    EXPECT_EQ(Call(AddPlan, request), R"(true {"ErrorInfo":"","ID":"-16"})");
    EXPECT_EQ(SentPlan(Sent()), "POST /NXAPI/Vantorel/Platform/V0/Views " + plan.at(0)) << request;
  }
}

TEST_F(PlanCallsTest, ChangingSendsThePlanAndMovesItInTheCache) {
  CacheGroup(Group(5));
  CacheView(View(3, 5, "before", 1));
  server.Answer(Accepted());
  const std::pair<std::string, std::string> cases[] = {{"5", "5"}, {"-3", "-3"}, {"-2", "-1"}, {"-4", "-1"}};
  for (const auto& [groupId, sentId] : cases) {
    EXPECT_EQ(Call(UpdatePlan, R"({"ID":"3","Name":"after","Type":1,"AutoCycle":1,"RoundTime":20,"GroupID":")" +
                                   groupId + R"(","PlanPages":[{"windowDivision":4}],"is_share_view":true})"),
              R"(true {"ErrorInfo":""})");
    EXPECT_EQ(SentPlan(Sent()), "PUT /NXAPI/Vantorel/Platform/V0/Views/3 " + sentId + " 7 1 20 after 1 4 (none)");
  }
  EXPECT_EQ(Members(5) + ViewName(3), "after");
  Call(UpdatePlan, R"({"ID":"3","Type":0})");
  EXPECT_EQ(At(Sent(), "/View/UserID"), "-1");
}

TEST_F(PlanCallsTest, WhatTheUserHasEditedHasNoGuidUntilTheServerTellsItAnew) {
  const auto guid = [](const std::string& id) {
    return At(Call(GetPlanDetail, R"({"ID":")" + id + "\"}"), "/AppCode");
  };
  const auto tell = [](const std::string& number, const std::string& more) {
    QorviViewPlugin::ViewDataResourceUpdate(
        ViewsDocument(R"({"ID":3,"GUID":"guid","Name":"n","ChangeNumber":")" + number + '"' + more));
  };
  tell("1", R"(,"Method":0})");
  EXPECT_EQ(guid("3"), "guid");
  server.Answer(Accepted(R"({"View":{"ID":42},"ChangeNumber":"2"})"));
  EXPECT_EQ(Call(AddPlan, R"({"Name":"n"})"), R"(true {"ErrorInfo":"","ID":"42"})");
  EXPECT_EQ(Call(UpdatePlan, R"({"ID":"3","Name":"n"})"), R"(true {"ErrorInfo":""})");
  EXPECT_EQ(guid("42") + guid("3"), "");
  tell("2", R"(,"Method":1})");
  EXPECT_EQ(guid("3"), "") << "that is the edit itself";
  tell("3", R"(,"Method":1})");
  EXPECT_EQ(guid("3"), "guid");
}

class PlanGroupCallsTest : public CallTest {};

TEST_F(PlanGroupCallsTest, TheRootHasThreeFoldersWhateverTypeIsAskedFor) {
  CacheGroup(Group(1));
  ExpectAnswers();
}

TEST_F(PlanGroupCallsTest, ChildrenAreListedByTypeButCountedAltogether) {
  CacheGroup(Group(0xFFFFFFF0, 3, "private too", 1));
  CacheGroup(Group(5, 3, "public", 0));
  CacheGroup(Group(9, 3, "private", 1));
  CacheGroup(Group(6, 5, "elsewhere", 1));
  ExpectAnswers();
}

TEST_F(PlanGroupCallsTest, TheParentsIdIsReadAsANumberWithTwoNamesForTheTop) {
  auto top = Group(1, kNoId, "top");
  top.bShared = true;
  CacheGroup(top);
  CacheGroup(Group(2, 0, "below zero"));
  CacheGroup(Group(3, 0xFFFFFFFD, "below -3"));
  ExpectAnswers();
}

TEST_F(PlanGroupCallsTest, AddingSendsTheGroupWithItsOwnerAndAnswersTheNewId) {
  server.Answer(Accepted(R"({"ViewGroup":{"ID":42}})"));
  ExpectAnswers();
}

TEST_F(PlanGroupCallsTest, RenamingSendsNameAndFlagOnlyAndDoesNotFoldTheId) {
  server.Answer(Accepted());
  ExpectAnswers();
}

TEST_F(PlanGroupCallsTest, DeletingAsksTheServerOnlyForAKnownGroup) {
  CacheGroup(Group(5, kNoId, "five", 1));
  server.Answer(Refused(100, 2));
  EXPECT_EQ(Call(DeletePlanGroup, R"({"ID":"6","GroupName":"five","Type":1})"),
            R"(false {"ErrorInfo":"The folder is not known here"})");
  EXPECT_EQ(server.Take(), Texts());
  EXPECT_EQ(Call(DeletePlanGroup, R"({"ID":"5"})"), R"(false {"ErrorInfo":"The view group does not exist"})");
  server.Answer(Accepted());
  EXPECT_EQ(Call(DeletePlanGroup, R"({"ID":"5"})"), R"(true {"ErrorInfo":""})");
  EXPECT_EQ(GroupName(5), "(none)");
}

}  // namespace
}  // namespace call_test
