// SPDX-License-Identifier: Apache-2.0
// Views carried from one server to another.
#include <algorithm>
#include <regex>

#include "ViewctlRunner.h"

namespace test {
namespace {

class ExportImportTest : public OwnSiteTest {
 protected:
  std::string Export(const Site& site, const std::string& user, const QStringList& ids = {}) {
    const Outcome outcome = RunAs(site, user, QStringList{"export", "-o", File("export.json")} + ids);
    EXPECT_EQ(outcome.status, 0) << outcome;
    return ReadFile(File("export.json"));
  }

  Outcome Import(const Site& site, const std::string& user, const std::string& content,
                 const QStringList& options = {}) {
    return RunAs(site, user, QStringList{"import", File("import.json", content)} + options);
  }

  static int LinesWith(const Outcome& outcome, const std::string& start) {
    return static_cast<int>(
        std::ranges::count_if(Lines(outcome.out), [&](const auto& line) { return line.starts_with(start); }));
  }
};

TEST_F(ExportImportTest, AnExportOfAnImportHasTheSameBytesAndASecondImportMakesNothing) {
  const Site copy(false);
  const std::string exported = Export(m_site, "maria");
  for (const char* part : {"GUID", "AppCode", "\"ID\"", "\"ResourceName\"", "UserID", "OwnerId", "maria\""}) {
    EXPECT_FALSE(Has(exported, part)) << part;
  }
  EXPECT_TRUE(Has(exported, "\"Name\": \"Forecourt\",\n   \"AutoCycle\": 1,\n   \"RoundTime\": 20,\n")) << exported;

  const Outcome dry = Import(copy, "admin", exported, {"--dry-run"});
  EXPECT_EQ(dry.LastLine(), "Would make 11 folders and 36 views, skipped 0 folders and 0 views, failed 0");
  const Outcome first = Import(copy, "admin", exported);
  EXPECT_EQ(first.status, 0) << first;
  EXPECT_EQ(first.LastLine(), "Made 11 folders and 36 views, skipped 0 folders and 0 views, failed 0");
  EXPECT_EQ(Export(copy, "admin"), exported);

  const Outcome second = Import(copy, "admin", exported);
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(second.LastLine(), "Made 0 folders and 0 views, skipped 11 folders and 36 views, failed 0");
  EXPECT_EQ(LinesWith(second, "skipped view"), 36);
  EXPECT_FALSE(Has(second.out, "other content"));
  EXPECT_EQ(Export(copy, "admin"), exported);
}

TEST_F(ExportImportTest, AnImportThatIsKilledIsCompletedByASecondWithoutDoubling) {
  const std::string exported = Export(m_site, "maria");
  const QString file = File("killed.json", exported);
  for (const int lines : {1, 7, 12, 25, 40}) {
    const Site copy(false);
    Running first(copy.As("admin") + QStringList{"import", file}, "sample-admin");
    for (int i = 0; i < lines; ++i) EXPECT_NE(first.NextLine(), "");
    first.Kill();
    EXPECT_EQ(Import(copy, "admin", exported).status, 0);
    EXPECT_EQ(Export(copy, "admin"), exported) << "killed after " << lines << " lines";
  }
}

TEST_F(ExportImportTest, WhatOthersSharedIsLeftOutUnlessNamed) {
  ExpectSaid(Maria({"export", "-o", "-"}), 0, "Left out 3 that others shared with you");
  const std::string named = Export(m_site, "maria", {"137"});
  EXPECT_TRUE(Has(named, "\"Kind\": \"private\"") && Has(named, "夜間巡回")) << named;
}

TEST_F(ExportImportTest, IntoAGroupKeepsFoldersAndReportsOtherContent) {
  const QStringList ids = {"group:6", "129"};
  const std::string bus = Export(m_site, "maria", ids);
  const Outcome made = Import(m_site, "maria", bus, {"--into", "9"});
  EXPECT_EQ(made.LastLine(), "Made 1 folder and 4 views, skipped 0 folders and 0 views, failed 0") << made.err;
  ExpectSaid(made, 0, "made view private/My rounds/Bus terminal/Bus hall\n");
  ExpectSaid(made, 0, "made view private/My rounds/Weather and news\n");
  EXPECT_EQ(Import(m_site, "maria", bus, {"--into", "9"}).LastLine(),
            "Made 0 folders and 0 views, skipped 1 folder and 4 views, failed 0");

  std::string changed = bus;
  const std::string seconds = "\"RoundTime\": 30";
  changed.replace(changed.find(seconds), seconds.size(), "\"RoundTime\": 31");
  ExpectSaid(Import(m_site, "maria", changed), 0, "is there with other content, kept\n");
  EXPECT_EQ(Export(m_site, "maria", ids), bus);
  EXPECT_EQ(Import(m_site, "maria", bus, {"--into", "999"}).status, 1);

  // Of two folders of one path it goes into the one that is named, whatever the other holds.
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(Maria({"call", "AddPlanGroup", R"({"Name":"Twin","ParentID":"-1","Type":1})"}).status, 0);
  }
  EXPECT_EQ(Import(m_site, "maria", bus, {"--into", "15"}).status, 0);
  EXPECT_EQ(Maria({"tree", "group:14"}).out, "Twin/  (group 14)\n");
  ExpectSaid(Maria({"tree", "group:15"}), 0, "└── Weather and news  (view 145)\n");
  const std::string turned =
      std::regex_replace(Export(m_site, "maria", {"group:15"}), std::regex("(\"RoundTime\": )"), "$011");
  EXPECT_EQ(Import(m_site, "maria", turned, {"--update"}).status, 0);
  EXPECT_EQ(Export(m_site, "maria", {"group:15"}), turned) << "changed where it lies";
  EXPECT_EQ(Import(m_site, "maria", bus, {"--into", "14"}).LastLine(), made.LastLine());
}

TEST_F(ExportImportTest, WhatTheServerRefusesIsReportedAndTheRestIsMade) {
  const Site copy(false);
  const std::string content =
      R"({"Format":"viewctl-export","Version":1,"Folders":[],"Views":[)"
      R"({"Kind":"public","Path":["bad\nname"],"Name":"lost","AutoCycle":0,"RoundTime":0,"PlanPages":[]},)"
      R"({"Kind":"public","Path":["a","b"],"Name":"made","AutoCycle":0,"RoundTime":0,"PlanPages":[]}]})";
  const Outcome outcome = Import(copy, "admin", content);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(LinesWith(outcome, "failed folder public/bad\\u000aname: "), 1) << outcome.out;
  EXPECT_EQ(LinesWith(outcome, "failed view public/bad\\u000aname/lost: its folder was not made"), 1) << outcome.out;
  EXPECT_EQ(outcome.LastLine(), "Made 2 folders and 1 view, skipped 0 folders and 0 views, failed 2");
}

TEST_F(ExportImportTest, ViewsOfOneNameAreMatchedOneByOne) {
  const Site copy(false);
  const auto twins = [](int count) {
    std::string views;
    for (int time = 1; time <= count; ++time) {
      views += std::string(time > 1 ? "," : "") +
               R"({"Kind":"shared","Path":["x","y"],"Name":"twin","AutoCycle":0,"PlanPages":[],"RoundTime":)" +
               std::to_string(time) + "}";
    }
    return R"({"Format":"viewctl-export","Version":1,"Folders":[],"Views":[)" + views + "]}";
  };
  EXPECT_EQ(Import(copy, "admin", twins(2)).LastLine(),
            "Made 2 folders and 2 views, skipped 0 folders and 0 views, failed 0");
  const Outcome more = Import(copy, "admin", twins(3));
  EXPECT_EQ(more.LastLine(), "Made 0 folders and 1 view, skipped 2 folders and 2 views, failed 0");
  EXPECT_FALSE(Has(more.out, "other content")) << more;
}

}  // namespace
}  // namespace test
