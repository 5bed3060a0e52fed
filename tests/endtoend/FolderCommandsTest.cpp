// SPDX-License-Identifier: Apache-2.0
// Views and folders made, moved, copied, deleted, shared and set as default.
#include <QFile>

#include "../platform/ScriptedSite.h"
#include "ViewctlRunner.h"

namespace test {
namespace {

class FolderCommandsTest : public OwnSiteTest {
 protected:
  static constexpr const char* kTable = TABLES "FolderCommands.txt";
};

TEST_F(FolderCommandsTest, FoldersAreMadeWhereTheyAreSaidToLie) {
  ExpectTable(kTable);
  const Outcome dry = test::Run({"mkdir", "New", "--dry-run", "--data", File("new")});
  EXPECT_EQ(dry.status, 0);
  EXPECT_FALSE(Has(dry.err, "new store") || QFile::exists(File("new"))) << "a dry run makes no store" << dry;
}

TEST_F(FolderCommandsTest, ViewsAreMovedAndRenamed) {
  const std::string before = Maria({"show", "110", "--json"}).out;
  ExpectTable(kTable);
  const std::string after = Maria({"show", "110", "--json"}).out;
  EXPECT_EQ(after.substr(after.find("\"PlanPages\"")), before.substr(before.find("\"PlanPages\"")))
      << "nothing is lost";
}

TEST_F(FolderCommandsTest, WhatCannotBeMovedIsToldAndStays) {
  const std::string before = Maria({"export", "-o", "-"}).out;
  ExpectTable(kTable);
  EXPECT_EQ(Maria({"export", "-o", "-"}).out, before);
}

TEST_F(FolderCommandsTest, CopiesAreTheUsersOwnWhereTheyLieAmongTheirs) {
  ExpectTable(kTable);
  EXPECT_EQ(RunAs(m_site, "kenji", {"show", "private/My rounds/夜間巡回"}).status, 2);
}

// Nor is anything where the line has a mistake.
TEST_F(FolderCommandsTest, NothingIsDeletedUnlessSomebodySaysYes) {
  ExpectTable(kTable);
}

TEST_F(FolderCommandsTest, WhatFailsAgainAndAgainIsGivenUpOnlyWhereTheServerWasAsked) {
  ExpectTable(kTable);
}

TEST_F(FolderCommandsTest, SharingTellsTheOutcomeForEachUser) {
  ExpectTable(kTable);
  EXPECT_EQ(RunAs(m_site, "kenji", {"show", "132"}).status, 0);
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
  ExpectTable(kTable);
}

}  // namespace
}  // namespace test
