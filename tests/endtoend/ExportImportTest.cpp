// SPDX-License-Identifier: Apache-2.0
// Views carried from one server to another.
#include <algorithm>

#include "ViewctlRunner.h"

namespace test {
namespace {

class ExportImportTest : public testing::Test {
 protected:
  QString File(const char* name) const { return m_folder.filePath(name); }

  std::string Export(const Site& site, const std::string& user, const QStringList& ids = {}) {
    const QString file = File("export.json");
    const Outcome outcome = RunAs(site, user, QStringList{"export", "-o", file} + ids);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return ReadFile(file.toStdString());
  }

  Outcome Import(const Site& site, const std::string& user, const std::string& content,
                 const QStringList& options = {}) {
    const QString file = File("import.json");
    WriteFile(file.toStdString(), content);
    return RunAs(site, user, QStringList{"import", file} + options);
  }

  static std::string LastLine(const Outcome& outcome) {
    const auto lines = Lines(outcome.out);
    return lines.empty() ? "" : lines.back();
  }

  static int LinesWith(const Outcome& outcome, const std::string& start) {
    const auto lines = Lines(outcome.out);
    return static_cast<int>(
        std::count_if(lines.begin(), lines.end(), [&](const auto& line) { return line.rfind(start, 0) == 0; }));
  }

 private:
  QTemporaryDir m_folder;
};

TEST_F(ExportImportTest, AnExportOfAnImportHasTheSameBytesAndASecondImportMakesNothing) {
  const Site original;
  const Site copy(false);
  const std::string exported = Export(original, "maria");
  for (const char* part : {"GUID", "AppCode", "\"ID\"", "\"ResourceName\"", "UserID", "OwnerId", "maria\""}) {
    EXPECT_EQ(exported.find(part), std::string::npos) << part;
  }

  const Outcome dry = Import(copy, "admin", exported, {"--dry-run"});
  EXPECT_EQ(LastLine(dry), "Would make 11 folders and 36 views, skipped 0 folders and 0 views, failed 0");
  const Outcome first = Import(copy, "admin", exported);
  EXPECT_EQ(first.status, 0) << first.err << first.out;
  EXPECT_EQ(LastLine(first), "Made 11 folders and 36 views, skipped 0 folders and 0 views, failed 0");
  EXPECT_EQ(Export(copy, "admin"), exported);

  const Outcome second = Import(copy, "admin", exported);
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(LastLine(second), "Made 0 folders and 0 views, skipped 11 folders and 36 views, failed 0");
  EXPECT_EQ(LinesWith(second, "skipped view"), 36);
  EXPECT_EQ(second.out.find("other content"), std::string::npos);
  EXPECT_EQ(Export(copy, "admin"), exported);
}

TEST_F(ExportImportTest, AnImportThatIsKilledIsCompletedByASecondWithoutDoubling) {
  const Site original;
  const std::string exported = Export(original, "maria");
  WriteFile(File("killed.json").toStdString(), exported);
  for (const int lines : {1, 7, 12, 25, 40}) {
    const Site copy(false);
    Running first(copy.As("admin") + QStringList{"import", File("killed.json")}, "sample-admin");
    for (int i = 0; i < lines; ++i) EXPECT_NE(first.NextLine(), "");
    first.Kill();
    const Outcome second = Import(copy, "admin", exported);
    EXPECT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(Export(copy, "admin"), exported) << "killed after " << lines << " lines";
  }
}

TEST_F(ExportImportTest, AnInterruptedImportGoesOnWhereItEnded) {
  const Site original;
  const Site copy(false);
  const std::string station = Export(original, "maria", {"group:1"});
  // What a first run had made before it was interrupted.
  EXPECT_EQ(Import(copy, "admin", Export(original, "maria", {"101", "group:3"})).status, 0);
  const Outcome rest = Import(copy, "admin", station);
  EXPECT_EQ(rest.status, 0) << rest.out;
  EXPECT_EQ(LinesWith(rest, "skipped view"), 5);
  EXPECT_EQ(Export(copy, "admin"), station);
}

TEST_F(ExportImportTest, WhatOthersSharedIsLeftOutUnlessNamed) {
  const Site site;
  const Outcome all = RunAs(site, "maria", {"export", "-o", "-"});
  EXPECT_NE(all.err.find("Left out 3 that others shared with you"), std::string::npos) << all.err;
  const std::string named = Export(site, "maria", {"137"});
  EXPECT_NE(named.find("\"Kind\": \"private\""), std::string::npos) << named;
  EXPECT_NE(named.find("夜間巡回"), std::string::npos) << named;
}

TEST_F(ExportImportTest, IntoAGroupKeepsFoldersAndReportsOtherContent) {
  const Site site;
  const QStringList ids = {"group:6", "129"};
  const std::string bus = Export(site, "maria", ids);
  const Outcome made = Import(site, "maria", bus, {"--into", "9"});
  EXPECT_EQ(LastLine(made), "Made 1 folder and 4 views, skipped 0 folders and 0 views, failed 0") << made.err;
  EXPECT_NE(made.out.find("made view private/My rounds/Bus terminal/Bus hall\n"), std::string::npos) << made.out;
  EXPECT_NE(made.out.find("made view private/My rounds/Weather and news\n"), std::string::npos) << made.out;
  EXPECT_EQ(LastLine(Import(site, "maria", bus, {"--into", "9"})),
            "Made 0 folders and 0 views, skipped 1 folder and 4 views, failed 0");

  std::string changed = bus;
  const std::string seconds = "\"RoundTime\": 30";
  changed.replace(changed.find(seconds), seconds.size(), "\"RoundTime\": 31");
  const Outcome kept = Import(site, "maria", changed);
  EXPECT_NE(kept.out.find("is there with other content, kept\n"), std::string::npos) << kept.out;
  EXPECT_EQ(Export(site, "maria", ids), bus);
  EXPECT_EQ(Import(site, "maria", bus, {"--into", "999"}).status, 1);
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
  EXPECT_EQ(LastLine(outcome), "Made 2 folders and 1 view, skipped 0 folders and 0 views, failed 2");
}

TEST_F(ExportImportTest, ADryRunMakesNoStore) {
  const Site original;
  const QString exported = File("all.json");
  WriteFile(exported.toStdString(), Export(original, "maria", {"group:6"}));
  const QString folder = File("none");
  const Outcome dry = test::Run({"import", exported, "--dry-run", "--data", folder});
  EXPECT_EQ(dry.status, 0) << dry.err;
  EXPECT_EQ(LastLine(dry), "Would make 1 folder and 3 views, skipped 0 folders and 0 views, failed 0");
  EXPECT_EQ(dry.err.find("new store"), std::string::npos) << dry.err;
  EXPECT_FALSE(QFile::exists(folder));
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
  EXPECT_EQ(LastLine(Import(copy, "admin", twins(2))),
            "Made 2 folders and 2 views, skipped 0 folders and 0 views, failed 0");
  const Outcome more = Import(copy, "admin", twins(3));
  EXPECT_EQ(LastLine(more), "Made 0 folders and 1 view, skipped 2 folders and 2 views, failed 0");
  EXPECT_EQ(more.out.find("other content"), std::string::npos) << more.out;
}

}  // namespace
}  // namespace test
