// SPDX-License-Identifier: Apache-2.0
#include "CallFixture.h"
#include "QorviViewPlugin/QorviViewPlugin.h"

namespace call_test {
namespace {

using QorviViewPlugin::kNoId;

class PlanGroupCallsTest : public CallTest {};

TEST_F(PlanGroupCallsTest, TheRootHasThreeFoldersWhateverTypeIsAskedFor) {
  constexpr char kFolders[] =
      R"(true {"ErrorInfo":"","Total":3,"PlanGroups":[)"
      R"({"Name":"PublicView","ParentID":"-1","ID":"-1","Type":0,"is_share_viwgroup":false},)"
      R"({"Name":"PrivateView","ParentID":"-1","ID":"-1","Type":1,"is_share_viwgroup":false},)"
      R"({"Name":"Qorvi-Quellan.cb64d4b556f94f928e4082f241a47a7c.name","ParentID":"-1","ID":"-1","Type":2,)"
      R"("is_share_viwgroup":false}]})";
  CacheGroup(1, "a group", 0, kNoId);
  for (const char* type : {"0", "1", "2", "9"}) {
    EXPECT_EQ(Call(GetPlanGroups, R"({"ParentID":"root","GroupType":)" + std::string(type) + "}"), kFolders);
  }
}

TEST_F(PlanGroupCallsTest, ChildrenAreListedByTypeButCountedAltogether) {
  CacheGroup(0xFFFFFFF0, "private too", 1, 3);
  CacheGroup(5, "public", 0, 3);
  CacheGroup(9, "private", 1, 3);
  CacheGroup(6, "elsewhere", 1, 5);
  EXPECT_EQ(Call(GetPlanGroups, R"({"ParentID":"3","GroupType":1})"),
            R"(true {"ErrorInfo":"","Total":3,"PlanGroups":[)"
            R"({"Name":"private","ParentID":"3","ID":"9","Type":1,"is_share_viwgroup":false},)"
            R"({"Name":"private too","ParentID":"3","ID":"-16","Type":1,"is_share_viwgroup":false}]})");
  EXPECT_EQ(Call(GetPlanGroups, R"({"ParentID":"3","GroupType":2})"),
            R"(true {"ErrorInfo":"","Total":3,"PlanGroups":[]})");
}

TEST_F(PlanGroupCallsTest, TheParentsIdIsReadAsANumberWithTwoNamesForTheTop) {
  auto top = Group(1, kNoId, "top");
  top.bShared = true;
  CoreTest::CacheGroup(top);
  CacheGroup(2, "below zero", 0, 0);
  CacheGroup(3, "below -3", 0, 0xFFFFFFFD);
  constexpr char kTop[] = R"(true {"ErrorInfo":"","Total":1,"PlanGroups":[)"
                          R"({"Name":"top","ParentID":"-1","ID":"1","Type":0,"is_share_viwgroup":true}]})";
  constexpr char kZero[] = R"(true {"ErrorInfo":"","Total":1,"PlanGroups":[)"
                           R"({"Name":"below zero","ParentID":"0","ID":"2","Type":0,"is_share_viwgroup":false}]})";
  for (const char* id : {"-1", "-2", "-4", "4294967295", " -4x"}) {
    EXPECT_EQ(Call(GetPlanGroups, R"({"ParentID":")" + std::string(id) + "\"}"), kTop) << id;
  }
  for (const char* id : {"0", "", "Root", "root ", "abc"}) {
    EXPECT_EQ(Call(GetPlanGroups, R"({"ParentID":")" + std::string(id) + "\"}"), kZero) << id;
  }
  EXPECT_EQ(At(Call(GetPlanGroups, R"({"ParentID":"-3"})").substr(5), "/PlanGroups[1]/Name"), "below -3");
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
    EXPECT_EQ(Sent(),
              (SentRequest{"POST", "/NXAPI/Vantorel/Platform/V0/ViewGroups",
                           R"({"ViewGroup":{"ID":-1,"Name":"n","ParentViewGroupID":)" + c.parent + R"(,"UserID":)" +
                               c.owner + R"(,"IsSharedView":)" + c.shared + R"(,"SequenceIndex":-1}})",
                           "", 0}));
  }
  EXPECT_EQ(GroupName(42), "n");
}

TEST_F(PlanGroupCallsTest, RenamingSendsNameAndFlagOnly) {
  CacheGroup(5, "before", 1, 3);
  server.Answer(Accepted());
  EXPECT_EQ(Call(UpdatePlanGroup, R"({"ID":"5","Name":"after","is_share_viewgroup":true,"ParentID":"8"})"),
            R"(true {"ErrorInfo":""})");
  const SentRequest sent = Sent();
  EXPECT_EQ(sent.method + " " + sent.url, "PUT /NXAPI/Vantorel/Platform/V0/ViewGroups/5");
  EXPECT_EQ(sent.body, R"({"ViewGroup":{"ID":5,"Name":"after","ParentViewGroupID":-1,"UserID":-1,"IsSharedView":1,)"
                       R"("SequenceIndex":-1}})");
  EXPECT_EQ(GroupName(5), "after");

  // The id is not folded.
  EXPECT_EQ(Call(UpdatePlanGroup, R"({"ID":"-2"})"), R"(true {"ErrorInfo":""})");
  EXPECT_EQ(Sent().url, "/NXAPI/Vantorel/Platform/V0/ViewGroups/4294967294");
}

TEST_F(PlanGroupCallsTest, DeletingAsksTheServerOnlyForAKnownGroup) {
  CacheGroup(5, "five", 1, kNoId);
  server.Answer(Accepted());
  EXPECT_EQ(Call(DeletePlanGroup, R"({"ID":"6","GroupName":"five","Type":1})"),
            R"(false {"ErrorInfo":"The folder is not known here"})");
  EXPECT_TRUE(server.Take().empty());
  EXPECT_EQ(Call(DeletePlanGroup, R"({"ID":"5"})"), R"(true {"ErrorInfo":""})");
  EXPECT_EQ(Sent().method, "DELETE");
  EXPECT_EQ(GroupName(5), "(none)");
}

}  // namespace
}  // namespace call_test
