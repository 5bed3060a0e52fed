// SPDX-License-Identifier: Apache-2.0
#include <future>

#include "CallFixture.h"
#include "QorviViewPlugin/FirstLoad.h"

namespace call_test {
namespace {

std::string Plan(const std::string& name, const std::string& id, const std::string& parentId, int type,
                 const std::string& isShared = "false") {
  return R"({"name":")" + name + R"(","Remark":"","ID":")" + id + R"(","ParentID":")" + parentId + R"(","Type":)" +
         std::to_string(type) + R"(,"is_share_view":)" + isShared + "}";
}

class PlanCallsTest : public CallTest {};

TEST_F(PlanCallsTest, PlansInNoGroupAreListedByTypeInNaturalOrderAndNotCounted) {
  CacheView(View(1, kNoId, "Gate 10", 1));
  auto shared = View(2, kNoId, "gate 9", 1);
  shared.bShared = true;
  CacheView(shared);
  CacheView(View(3, kNoId, "Public", 0));
  CacheView(View(4, 5, "In a group", 1));
  const std::string expected = R"(true {"ErrorInfo":"","Total":0,"Plans":[)" + Plan("gate 9", "2", "-1", 1, "true") +
                               "," + Plan("Gate 10", "1", "-1", 1) + "]}";
  for (const char* id : {"-1", "-2", "-4"}) {
    EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":")" + std::string(id) + R"(","Type":1})"), expected) << id;
  }
  EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":"-1"})"),
            R"(true {"ErrorInfo":"","Total":0,"Plans":[)" + Plan("Public", "3", "-1", 0) + "]}");
}

TEST_F(PlanCallsTest, AGroupListsAndCountsAllItsPlansWhateverTheirType) {
  CacheGroup(Group(5));
  CacheView(View(0xFFFFFFF0, 5, "b", 1));
  CacheView(View(2, 5, "A", 0));
  CacheView(View(3, 6, "c", 2));
  EXPECT_EQ(
      Call(GetPlansInGroup, R"({"GroupID":"5","Type":2})"),
      R"(true {"ErrorInfo":"","Total":2,"Plans":[)" + Plan("A", "2", "5", 0) + "," + Plan("b", "-16", "5", 1) + "]}");
}

TEST_F(PlanCallsTest, AnUnknownGroupFailsAndUnreadableIdsAskForGroupZero) {
  constexpr char kUnknown[] = R"(false {"ErrorInfo":"KaBeAUoxlQkKBOqwV","Total":0,"Plans":[]})";
  for (const char* id : {"7", "-3", "abc"}) {
    EXPECT_EQ(Call(GetPlansInGroup, R"({"GroupID":")" + std::string(id) + "\"}"), kUnknown) << id;
  }
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
  return text;
}

TEST_F(PlanCallsTest, AddingSendsThePlanWithItsOwnerAndAnswersTheNewId) {
  const std::pair<std::string, std::string> cases[] = {
      {R"({"GroupID":"5","Name":"n","Type":0,"AutoCycle":1,"RoundTime":20,"OwnerId":"99",)"
       R"("PlanPages":[{"windowDivision":4},{"windowDivision":9}]})",
       "5 -1 1 20 n (none) 4 9 "},
      {R"({"GroupID":"-2","Type":2})", "-1 7 0 0  (none) (none) (none) "},
      // Unlike the other calls this one does not read -4 as "in no group".
      {R"({"GroupID":"-4","Type":1})", "-4 7 0 0  (none) (none) (none) "},
  };
  server.Answer(Accepted(R"({"View":{"ID":4294967280}})"));
  for (const auto& [request, plan] : cases) {
    EXPECT_EQ(Call(AddPlan, request), R"(true {"ErrorInfo":"","ID":"-16"})");
    EXPECT_EQ(SentPlan(Sent()), "POST /NXAPI/Vantorel/Platform/V0/Views " + plan) << request;
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
    EXPECT_EQ(SentPlan(Sent()), "PUT /NXAPI/Vantorel/Platform/V0/Views/3 " + sentId + " 7 1 20 after 1 4 (none) ");
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

class PlanGroupCallsTest : public CallTest {
 protected:
  static std::string Children(const std::string& parent, const std::string& type = "0") {
    return Call(GetPlanGroups, R"({"ParentID":")" + parent + R"(","GroupType":)" + type + "}");
  }
};

TEST_F(PlanGroupCallsTest, TheRootHasThreeFoldersWhateverTypeIsAskedFor) {
  constexpr char kFolders[] =
      R"(true {"ErrorInfo":"","Total":3,"PlanGroups":[)"
      R"({"Name":"PublicView","ParentID":"-1","ID":"-1","Type":0,"is_share_viwgroup":false},)"
      R"({"Name":"PrivateView","ParentID":"-1","ID":"-1","Type":1,"is_share_viwgroup":false},)"
      R"({"Name":"Qorvi-Quellan.cb64d4b556f94f928e4082f241a47a7c.name","ParentID":"-1","ID":"-1","Type":2,)"
      R"("is_share_viwgroup":false}]})";
  CacheGroup(Group(1));
  for (const char* type : {"0", "9"}) EXPECT_EQ(Children("root", type), kFolders);
}

TEST_F(PlanGroupCallsTest, ChildrenAreListedByTypeButCountedAltogether) {
  CacheGroup(Group(0xFFFFFFF0, 3, "private too", 1));
  CacheGroup(Group(5, 3, "public", 0));
  CacheGroup(Group(9, 3, "private", 1));
  CacheGroup(Group(6, 5, "elsewhere", 1));
  EXPECT_EQ(Children("3", "1"),
            R"(true {"ErrorInfo":"","Total":3,"PlanGroups":[)"
            R"({"Name":"private","ParentID":"3","ID":"9","Type":1,"is_share_viwgroup":false},)"
            R"({"Name":"private too","ParentID":"3","ID":"-16","Type":1,"is_share_viwgroup":false}]})");
}

TEST_F(PlanGroupCallsTest, TheParentsIdIsReadAsANumberWithTwoNamesForTheTop) {
  auto top = Group(1, kNoId, "top");
  top.bShared = true;
  CacheGroup(top);
  CacheGroup(Group(2, 0, "below zero"));
  CacheGroup(Group(3, 0xFFFFFFFD, "below -3"));
  constexpr char kTop[] = R"(true {"ErrorInfo":"","Total":1,"PlanGroups":[)"
                          R"({"Name":"top","ParentID":"-1","ID":"1","Type":0,"is_share_viwgroup":true}]})";
  for (const char* id : {"-1", "-2", "-4", " -4x"}) EXPECT_EQ(Children(id), kTop) << id;
  for (const char* id : {"0", "Root", "root "}) EXPECT_EQ(At(Children(id), "/PlanGroups[1]/Name"), "below zero") << id;
  EXPECT_EQ(At(Children("-3"), "/PlanGroups[1]/Name"), "below -3");
}

TEST_F(PlanGroupCallsTest, AddingSendsTheGroupWithItsOwnerAndAnswersTheNewId) {
  const struct {
    std::string request, parent, owner, shared;
  } cases[] = {
      {R"("ParentID":"4","Type":0)", "4", "-1", "-1"},
      {R"("ParentID":"-2","Type":1)", "-1", "7", "-1"},
      {R"("ParentID":"-4","Type":2,"is_share_viewgroup":true)", "-1", "7", "1"},
      {R"("ParentID":"-3","Type":2)", "-3", "7", "-1"},
  };
  server.Answer(Accepted(R"({"ViewGroup":{"ID":42}})"));
  for (const auto& c : cases) {
    EXPECT_EQ(Call(AddPlanGroup, R"({"Name":"n",)" + c.request + "}"), R"(true {"ErrorInfo":"","ID":"42"})");
    EXPECT_EQ(Sent(), R"(POST /NXAPI/Vantorel/Platform/V0/ViewGroups {"ViewGroup":{"ID":-1,"Name":"n",)"
                      R"("ParentViewGroupID":)" +
                          c.parent + R"(,"UserID":)" + c.owner + R"(,"IsSharedView":)" + c.shared +
                          R"(,"SequenceIndex":-1}})");
  }
}

TEST_F(PlanGroupCallsTest, RenamingSendsNameAndFlagOnlyAndDoesNotFoldTheId) {
  server.Answer(Accepted());
  EXPECT_EQ(Call(UpdatePlanGroup, R"({"ID":"-2","Name":"after","is_share_viewgroup":true,"ParentID":"8"})"),
            R"(true {"ErrorInfo":""})");
  EXPECT_EQ(Sent(), R"(PUT /NXAPI/Vantorel/Platform/V0/ViewGroups/4294967294 {"ViewGroup":{"ID":-2,"Name":"after",)"
                    R"("ParentViewGroupID":-1,"UserID":-1,"IsSharedView":1,"SequenceIndex":-1}})");
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
