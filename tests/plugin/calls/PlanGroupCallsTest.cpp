// SPDX-License-Identifier: Apache-2.0
#include "CallFixture.h"

namespace call_test {
namespace {

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
  server.Answer(Accepted());
  EXPECT_EQ(Call(DeletePlanGroup, R"({"ID":"6","GroupName":"five","Type":1})"),
            R"(false {"ErrorInfo":"The folder is not known here"})");
  EXPECT_EQ(server.Take(), Texts());
  EXPECT_EQ(Call(DeletePlanGroup, R"({"ID":"5"})"), R"(true {"ErrorInfo":""})");
  EXPECT_EQ(GroupName(5), "(none)");
}

}  // namespace
}  // namespace call_test
