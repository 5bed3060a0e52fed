// SPDX-License-Identifier: Apache-2.0
// What edits do to the lists of the one who makes them and of the others.

#include <regex>

#include "../Cases.h"
#include "TestClient.h"

namespace server::test {
namespace {

// Numbers are given from 1, to views and groups each.
class EditsTest : public ServerTest {};

TEST_F(EditsTest, AViewKeepsWhatItsClientWroteAndItsWindowsTextsLeaveAsTexts) {
  const testing_support::Case view = testing_support::Cases(TABLES "Edits.txt").at(0);
  ann.Do(view.text);
  const std::string list = bob.Get("V0/Views").body;
  EXPECT_NE(list.find(view.expected.at(0)), std::string::npos) << list;
  EXPECT_EQ(bob.Show("View", 1, {"SharedUserID", "Method"}), "- -");
  const std::regex guid("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
  EXPECT_TRUE(std::regex_match(bob.Show("View", 1, {"GUID"}), guid)) << "the server gives it";
  ann.Post("V0/Views", R"({"View":{"Name":"bare"}})");
  EXPECT_EQ(bob.Show("View", 2, {"ViewGroupID", "UserID", "AutoCycle", "CycleTime"}), "-1 -1 -1 -1");
}

TEST_F(EditsTest, AGroupIsListedWithTheServersMembers) {
  ann.Post("V0/ViewGroups", R"({"ViewGroup":{"Name":"G","ChangeNumber":"77","Unknown":1}})");
  EXPECT_EQ(bob.Get("V0/ViewGroups").DataText(),
            R"({"ChangeNumber":"1","ViewGroupList":{"ViewGroup":[{"ID":1,"Name":"G","ParentViewGroupID":-1,)"
            R"("UserID":-1,"IsSharedView":-1,"SequenceIndex":1,"ChangeNumber":"1"}]}})");
}

TEST_F(EditsTest, ReplacingTakesNameFolderCycleAndPagesAndKeepsTheRest) {
  ann.AddGroup("F", -1, kAnn);
  ann.AddView("first", -1, kAnn);
  ann.AddView("V", -1, kAnn, R"(,"PlanPages":[{"SpliteType":1}],"Extra":1)");
  ann.Share(2, "2");
  const std::string guid = ann.Show("View", 2, {"GUID"});
  const std::string body = R"({"View":{"ID":77,"Name":"W","ViewGroupID":1,"UserID":2,"SequenceIndex":50,)"
                           R"("AutoCycle":1,"CycleTime":30}})";
  ASSERT_EQ(ann.Put("V0/Views/2", body).Error(), "0/0");
  // Its place is the one from when it was added.
  EXPECT_EQ(ann.Show("View", 2, {"Name", "ViewGroupID", "AutoCycle", "CycleTime", "Extra", "UserID", "SequenceIndex"}),
            "W 1 1 30 - 1 2");
  EXPECT_EQ(ann.Get("V0/Views").body.find("PlanPages"), std::string::npos);
  EXPECT_EQ(ann.Show("View", 2, {"GUID"}), guid);
  EXPECT_EQ(bob.ViewIds(), "2") << "still shared";

  ann.AddGroup("G", 1, kAnn);
  ann.AddGroup("open", -1, kPublic);
  ASSERT_EQ(ann.Put("V0/ViewGroups/2", GroupBody("H", -1, -1, 1)).Error(), "0/0");
  ASSERT_EQ(ann.Put("V0/ViewGroups/3", GroupBody("open", -1, -1, 1)).Error(), "0/0");
  const auto keys = {"Name", "ParentViewGroupID", "UserID", "IsSharedView"};
  EXPECT_EQ(ann.Show("ViewGroup", 2, keys), "H 1 1 1");
  EXPECT_EQ(ann.Show("ViewGroup", 1, keys), "F -1 1 -1") << "never 0";
  EXPECT_EQ(bob.Show("ViewGroup", 3, keys), "open -1 -1 -1") << "what has no owner is not shared";
}

TEST_F(EditsTest, NewThingsStandLastInTheirOwnersFolderAndMovingSetsFolderAndOrder) {
  const int32_t from = ann.AddGroup("A", -1, kPublic);
  const int32_t to = ann.AddGroup("B", -1, kPublic);
  for (const Client* client : {&ann, &bob, &ann}) client->AddView("V", from, kPublic);
  const auto where = [](const Client& client, int32_t id) {
    return client.Show("View", id, {"ViewGroupID", "SequenceIndex"});
  };
  EXPECT_EQ(where(ann, 1) + "; " + where(ann, 2) + "; " + where(ann, 3), "1 1; 1 2; 1 3");
  EXPECT_EQ(where(ann, ann.AddView("c", -1, kAnn)), "-1 1");
  EXPECT_EQ(where(bob, bob.AddView("d", -1, kBob)), "-1 1") << "the top level is one folder for each owner";
  ASSERT_EQ(bob.Put("V0/Views/Move", MoveBody(1, to, "3,1,3")).Error(), "0/0");
  EXPECT_EQ(where(ann, 3) + "; " + where(ann, 1) + "; " + where(ann, 2), "2 1; 2 2; 1 2") << "a repeat counts once";
  ASSERT_EQ(ann.Put("V0/ViewGroups/Move", MoveBody(2, from, "2")).Error(), "0/0");
  EXPECT_EQ(ann.Show("ViewGroup", to, {"ParentViewGroupID"}), "1");
}

TEST_F(EditsTest, AContentHasItsFoldersOwnerAndNoGroupLiesInItself) {
  ann.AddGroup("Inner", ann.AddGroup("Open", -1, kPublic), kPublic);
  ann.AddView("V", ann.AddGroup("Own", -1, kAnn), kAnn);
  bob.AddView("S", bob.AddGroup("Bobs", -1, kBob), kBob);
  bob.Share(2, "1");
  const int64_t before = ann.Sequence();
  for (const auto& [edit, error] : testing_support::Cases(TABLES "Edits.txt")) {
    EXPECT_EQ(ann.Do(edit).Error(), error.at(0)) << edit;
  }
  EXPECT_EQ(ann.Sequence(), before) << "what is refused changes nothing";
}

TEST_F(EditsTest, SharingAddsUsersAndTellsWhichOnesItCouldNot) {
  const int32_t id = ann.AddView("V", ann.AddGroup("F", -1, kAnn), kAnn);
  ann.AddView("P", -1, kPublic);
  EXPECT_EQ(ann.Share(id, "3").Error(), "0/0");
  EXPECT_EQ(ann.Share(id, "2,9,1,2,9").body,
            R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":{"ErrorList":{"Error":[)"
            R"({"UserID":9,"UserName":"","ErrorModule":100,"ErrorCode":5},)"
            R"({"UserID":1,"UserName":"ann","ErrorModule":100,"ErrorCode":4}]}}}})");
  // The sharer's folder is not theirs to see.
  EXPECT_EQ(bob.Show("View", id, {"UserID", "SharedUserID", "SharedUserName", "ViewGroupID"}), "1 1 ann -1");
  EXPECT_EQ(cid.ViewIds() + " " + bob.GroupIds(), "1,2 ");

  EXPECT_EQ(bob.Share(id, "3").Error(), "100/4") << "only the owner";
  EXPECT_EQ(ann.Share(2, "2").Error(), "100/4") << "only a private view";
  for (const char* users : {"", ",", "2,", "2,x", "2 ,3", "0x2", "99999999999"}) {
    EXPECT_EQ(ann.Share(id, users).Error(), "100/6") << users;
  }
  std::string many = "1";
  for (int user = 2; user <= 10001; ++user) many += "," + std::to_string(user);
  EXPECT_EQ(ann.Share(id, many).Outcome(), "100/7 413");
}

TEST_F(EditsTest, EachUserHasADefaultViewOfTheirOwn) {
  const std::string path = "V1/View/Default/Config";
  const auto config = [&path](const Client& client) { return client.Get(path).DataText(); };
  EXPECT_EQ(config(ann), R"({"Config":{"Type":-1,"ID":-1}})");
  EXPECT_EQ(ann.Put(path, R"({"ViewRequest":{"Type":2,"ID":41}})").Error(), "0/0");
  EXPECT_EQ(ann.Put(path, R"({"ViewRequest":{"Type":1,"ID":4294967263}})").Error(), "0/0");
  EXPECT_EQ(config(ann), R"({"Config":{"Type":1,"ID":-33}})");
  EXPECT_EQ(config(bob), R"({"Config":{"Type":-1,"ID":-1}})");
}

}  // namespace
}  // namespace server::test
