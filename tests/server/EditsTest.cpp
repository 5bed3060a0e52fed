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
  const std::string given = bob.Show("View", 1, {"GUID"});
  EXPECT_TRUE(std::regex_match(given, guid)) << "the server gives it";
  ann.Post("V0/Views", R"({"View":{"Name":"bare"}})");
  EXPECT_EQ(bob.Show("View", 2, {"ViewGroupID", "UserID", "AutoCycle", "CycleTime"}), "-1 -1 -1 -1");
  ann.Put("V0/Views/1", ViewBody("W", -1, kPublic));
  EXPECT_EQ(bob.Show("View", 1, {"Name", "GUID"}), "W " + given);
}

TEST_F(EditsTest, AGroupIsListedWithTheServersMembers) {
  Play(TABLES "Edits.txt");
}

TEST_F(EditsTest, ReplacingTakesNameFolderCycleAndPagesAndKeepsTheRest) {
  Play(TABLES "Edits.txt");
  EXPECT_EQ(ann.Get("V0/Views").body.find("PlanPages"), std::string::npos);
}

TEST_F(EditsTest, NewThingsStandLastInTheirOwnersFolderAndMovingSetsFolderAndOrder) {
  Play(TABLES "Edits.txt");
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
  Play(TABLES "Edits.txt");
  std::string many = "1";
  for (int user = 2; user <= 10001; ++user) many += "," + std::to_string(user);
  EXPECT_EQ(ann.Share(1, many).Outcome(), "100/7 413");
}

TEST_F(EditsTest, EachUserHasADefaultViewOfTheirOwn) {
  Play(TABLES "Edits.txt");
}

}  // namespace
}  // namespace server::test
