// SPDX-License-Identifier: Apache-2.0
// Views and folders made, moved, copied, deleted, shared and set as default.
#include <QFile>

#include "../platform/ScriptedSite.h"
#include "ViewctlRunner.h"

namespace test {
namespace {

class FolderCommandsTest : public OwnSiteTest {
 protected:
  // Runs it and expects that status and, in what it says, that part.
  void Expect(const QStringList& command, int status, const std::string& part) {
    ExpectSaid(Maria(command), status, part);
  }
  bool IsThere(const QString& view) { return Maria({"show", view}).status == 0; }
};

TEST_F(FolderCommandsTest, FoldersAreMadeWhereTheyAreSaidToLie) {
  Expect({"mkdir", "Station/New", "--dry-run"}, 0, "would make folder public/Station/New");
  Expect({"mkdir", "Station/New/Deep"}, 1, "there is no folder public/Station/New; --parents makes it too");
  Expect({"mkdir", "-p", "Station/New/Deep", "private/My rounds/Late"}, 0, "Made 3 folders, left 0, failed 0");
  Expect({"mkdir", "-p", "Station/New"}, 0, "left folder public/Station/New: is there");
  Expect({"mkdir", "bad\nname"}, 1, "The name is not valid");
  Expect({"mkdir", "public/public"}, 0, "made folder public/public: ");
  Expect({"mkdir", "-p", "public"}, 0, "left folder public: is there\n");
  const Outcome dry = test::Run({"mkdir", "New", "--dry-run", "--data", File("new")});
  EXPECT_EQ(dry.status, 0);
  EXPECT_FALSE(Has(dry.err, "new store") || QFile::exists(File("new"))) << "a dry run makes no store" << dry;
}

TEST_F(FolderCommandsTest, ViewsAreMovedAndRenamed) {
  Expect({"mv", "110", "111", "Station", "--dry-run"}, 0,
         "would move view 110 to public/Station/Platform 1 edge, magnified");
  EXPECT_FALSE(IsThere("Station/Platform 2"));
  const std::string before = Maria({"show", "110", "--json"}).out;
  Expect({"mv", "110", "111", "Station"}, 0, "Moved 2 things, left 0, failed 0");
  Expect({"mv", "110", "Station/Edge"}, 0, "moved view 110 to public/Station/Edge");
  EXPECT_TRUE(IsThere("Station/Platform 2") && IsThere("Station/Edge"));
  const std::string after = Maria({"show", "110", "--json"}).out;
  EXPECT_EQ(after.substr(after.find("\"PlanPages\"")), before.substr(before.find("\"PlanPages\"")))
      << "nothing is lost";
  Expect({"mv", "Station/Edge", "public"}, 0, "moved view 110 to public/Edge");
}

TEST_F(FolderCommandsTest, WhatCannotBeMovedIsToldAndStays) {
  const std::string before = Maria({"export", "-o", "-"}).out;
  Expect({"mv", "110", "Station/Forecourt"}, 1, "there is a view of that name, view 102; give another name");
  Expect({"mv", "102", "Station"}, 1, "it is there already");
  Expect({"mv", "110", "private"}, 1, "a view stays public, or its owner's; viewctl cp makes a copy");
  Expect({"mv", "132", "shared"}, 1, "no view can be put beside the shared folders; name one of them, or private");
  Expect({"cp", "103", "shared/copy"}, 1, "no view can be put beside the shared folders");
  Expect({"mv", "group:2", "Bus terminal"}, 1, "a folder can only be renamed where it is");
  Expect({"mv", "137", "private/My rounds"}, 1, "shared with you, and its owner's to edit");
  Expect({"mv", "110", "999"}, 1, "There is no group 999");
  Expect({"cp", "group:2", "private"}, 1, "only views are copied; viewctl export");
  EXPECT_EQ(Maria({"export", "-o", "-"}).out, before);
}

TEST_F(FolderCommandsTest, CopiesAreTheUsersOwnWhereTheyLieAmongTheirs) {
  Expect({"cp", "110", "private", "--dry-run"}, 0, "would copy view 110 to private/Platform 1 edge, magnified");
  EXPECT_FALSE(IsThere("private/Platform 1 edge, magnified"));
  Expect({"cp", "110", "137", "private/My rounds"}, 0, "Copied 2 things, left 0, failed 0");
  EXPECT_TRUE(IsThere("private/My rounds/夜間巡回") && IsThere("110"));
  EXPECT_EQ(RunAs(m_site, "kenji", {"show", "private/My rounds/夜間巡回"}).status, 2);
  Expect({"cp", "110", "Station/Copy"}, 0, "copied view 110 to public/Station/Copy");
  Expect({"cp", "110", "Station/Copy"}, 1, "there is a view of that name");
}

TEST_F(FolderCommandsTest, NothingIsDeletedUnlessSomebodySaysYes) {
  Expect({"rm", "110"}, 2, "Nothing was deleted: --yes deletes it without asking");
  Expect({"rm", "group:2", "--dry-run"}, 0, "would delete group 2 public/Station/Platforms with 2 folders");
  EXPECT_TRUE(IsThere("110"));
  Expect({"rm", "110", "999", "--yes"}, 1, "There is no view or group 999");
  EXPECT_TRUE(IsThere("110")) << "a line with a mistake does nothing";
  Expect({"rm", "137", "--yes"}, 1, "failed view 137");
  Expect({"rm", "110", "group:6", "--yes"}, 0, "Deleted 2 things, left 0, failed 0");
  EXPECT_FALSE(IsThere("110") || IsThere("119"));
}

TEST_F(FolderCommandsTest, WhatFailsAgainAndAgainIsGivenUpOnlyWhereTheServerWasAsked) {
  QStringList bad = {"mkdir"}, there = {"mv"};
  for (int i = 0; i < 6; ++i) bad << QString("bad\nname %1").arg(i);
  Expect(bad, 1, "gave up after 5 failures in a row\nMade 0 folders, left 0, failed 5\n");
  for (int id = 101; id <= 106; ++id) there << QString::number(id);
  Expect(there + QStringList{"110", "Station"}, 1, "Moved 1 thing, left 0, failed 6\n");
}

TEST_F(FolderCommandsTest, SharingTellsTheOutcomeForEachUser) {
  const Outcome some = Maria({"share", "private/My rounds/Cash office", "kenji", "5", "keni", "maria", "--retry", "1"});
  for (const char* part : {"shared with kenji\n", "shared with Ελένη\n", "failed with keni: there is no such user",
                           "failed with maria: Not permitted\n", "Shared 2 users, left 0, failed 2\n"}) {
    ExpectSaid(some, 1, part);
  }
  EXPECT_EQ(RunAs(m_site, "kenji", {"show", "132"}).status, 0);
  Expect({"share", "137", "kenji"}, 1, "failed with kenji: Not permitted");
}

using namespace testing_support;

TEST(SharingTest, ThoseWhoDidNotGetItAreTriedAsOftenAsWasSaid) {
  const std::tuple<const char*, int, int> cases[] = {{"0", 1, 1}, {"1", 1, 2}, {"5", 0, 3}};
  for (const auto& [retry, status, requests] : cases) {
    ScriptedSite site;
    site.SetNumbered("", R"({"ID":5,"ViewGroupID":-1,"UserID":1,"Name":"v"})", 3);
    site.AnswerOnce("V0/Users", ReplyingData(R"({"UserList":{"User":[{"ID":2,"Name":"ann"}]}})"));
    for (const auto& answer : {Refusing(500, 100, 8), Refusing(500, 100, 8), ReplyingData("{}")}) {
      site.AnswerOnce("V1/View/5/Share", answer);
    }
    const QString url = QString::fromStdString(site.Url());
    EXPECT_EQ(test::Run({"share", "5", "ann", "--retry", retry, "--server", url}, "any").status, status);
    EXPECT_EQ(site.Count("V1/View/5/Share"), requests) << retry;
  }
}

TEST(FailingServerTest, IsAskedNoMoreAfterAWhile) {
  QStringList move = {"mv"};
  std::string views;
  for (int id = 11; id <= 16; ++id) {
    const std::string number = std::to_string(id);
    views += (views.empty() ? "" : ",") + (R"({"ID":)" + number) + R"(,"ViewGroupID":-1,"UserID":-1,"Name":"v)" +
             number + R"(","PlanPages":[{"PlanViewItem":[{"ResourceType":7000,"ResourceID":5}]}]})";
    move << QString::number(id);
  }
  for (const auto& [command, end] : {std::pair(move + QStringList{"g"}, "Moved 0 things, left 0, failed 5\n"),
                                     {{"replace", "--kind", "map", "5", "6"}, "Changed 0 views, left 0, failed 5\n"}}) {
    ScriptedSite site;
    site.SetNumbered(R"({"ID":1,"ParentViewGroupID":-1,"UserID":-1,"Name":"g"})", views, 3);
    for (int id = 11; id <= 16; ++id) site.AnswerOnce("V0/Views/" + std::to_string(id), Refusing(500, 100, 8));
    ExpectSaid(test::Run(command + QStringList{"--server", QString::fromStdString(site.Url())}, "any"), 1,
               std::string("gave up after 5 failures in a row\n") + end);
    EXPECT_EQ(site.Count("V0/Views/16"), 0);
  }
}

TEST_F(FolderCommandsTest, TheDefaultViewIsToldAndSet) {
  Expect({"default"}, 0, "There is no default view; viewctl default VIEW sets one");
  Expect({"default", "Station/Forecourt"}, 0, "");
  EXPECT_EQ(Maria({"default", "--json"}).out, "{\"ID\":\"102\",\"Type\":1,\"Path\":\"public/Station/Forecourt\"}\n");
  Expect({"default", "1"}, 1, "1 is a folder");
  Expect({"default", "132", "--type", "7"}, 0, "");
  EXPECT_EQ(Maria({"default", "--json"}).out,
            "{\"ID\":\"132\",\"Type\":7,\"Path\":\"private/My rounds/Cash office\"}\n");
  Expect({"call", "SetClientViewConfig", R"({"view_type":1,"view_id":"999"})"}, 0, "");
  Expect({"default"}, 0, "view 999  (not to be seen)\n");
  Expect({"default", "--none"}, 0, "");
  EXPECT_EQ(Maria({"default", "--json"}).out, "{\"ID\":\"\",\"Type\":1,\"Path\":\"\"}\n");
  EXPECT_EQ(Maria({"default"}).out, "");
}

}  // namespace
}  // namespace test
