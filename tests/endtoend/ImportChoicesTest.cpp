// SPDX-License-Identifier: Apache-2.0
// What an import does with resources that are not there, with views that are, and when it is broken off.
#include "ViewctlRunner.h"

namespace test {
namespace {

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

class ImportChoicesTest : public OwnSiteTest {
 protected:
  std::string Export(const QStringList& what) { return Admin(QStringList{"export", "-o", "-"} + what).out; }
  // Many views of long names, so that an import of them stands still before its end while nobody reads what it says.
  static std::string Many(int count) {
    std::string views;
    for (int i = 0; i < count; ++i) {
      views += std::string(i == 0 ? "" : ",") + R"({"Kind":"public","Path":["Many"],"Name":"v)" + std::to_string(i) +
               std::string(200, '-') + R"(","AutoCycle":0,"RoundTime":0,"PlanPages":[]})";
    }
    return R"({"Format":"viewctl-export","Version":1,"Folders":[],"Views":[)" + views + "]}";
  }
};

TEST_F(ImportChoicesTest, WhatIsNotOnTheServerIsToldByViewAndWindow) {
  const Site empty(false);
  const QString file = File("e.json", Export({"110", "--with-names"}));
  const auto import = [&](const QStringList& options) {
    return RunAs(empty, "admin", QStringList{"import", file} + options);
  };
  const Outcome skipped = import({"--skip-unknown"});
  EXPECT_EQ(skipped.LastLine(), "Made 3 folders and 0 views, skipped 0 folders and 1 view, failed 0") << skipped.out;
  ExpectSaid(skipped, 0, "magnified: it shows what is not on this server\n");
  const Outcome made = import({});
  ExpectSaid(made, 0,
             "public/Station/Platforms/Platforms 1–2/Platform 1 edge, magnified, page 1, window 0: "
             "camera 2031 \"Platform 1, edge 1\" is not on this server\n");
  ExpectSaid(made, 0, "Warning: 1 resource not on this server;");
  EXPECT_EQ(made.LastLine(), "Made 0 folders and 1 view, skipped 3 folders and 0 views, failed 0");
  EXPECT_FALSE(Has(Admin({"import", file}).err, "Warning")) << "where they come from all are there";

  const QString all = File("all.json", Export({}));
  size_t unknown = 0;
  for (const std::string& line : Lines(RunAs(empty, "admin", {"import", all, "--dry-run"}).err)) {
    unknown += Has(line, " is not on this server");
  }
  ExpectSaid(RunAs(empty, "admin", {"import", all, "--skip-unknown"}), 0,
             "\npublic/Bus terminal/Bays 1–16, page 1, window 3: camera 2100 is not on this server\nand " +
                 std::to_string(unknown - 20) + " more; --dry-run tells all\n");
}

TEST_F(ImportChoicesTest, ThePathsThatAreToldAreTakenBack) {
  const QString file = File("s.json", R"({"Format":"viewctl-export","Version":1,"Folders":[],"Views":[{"Kind":"private",
      "Path":["In/out","a\\\\b"],"Name":"1/2","AutoCycle":0,"RoundTime":0,"PlanPages":[]}]})");
  const Outcome outcome = Admin({"import", file});
  size_t told = 0;
  for (const std::string& line : Lines(outcome.out)) {
    for (const auto& [begin, command] : {std::pair("made folder ", "tree"), std::pair("made view ", "show")}) {
      if (!line.starts_with(begin)) continue;
      EXPECT_EQ(Admin({command, QString::fromStdString(line.substr(std::string(begin).size()))}).status, 0) << line;
      ++told;
    }
  }
  EXPECT_EQ(told, 3u) << outcome.out << outcome.err;
}

TEST_F(ImportChoicesTest, NamesAreAnExtraOfTheExportOnly) {
  const std::string plain = Export({"group:6"});
  const std::string named = Export({"group:6", "--with-names"});
  const std::string head = plain.substr(0, plain.rfind(']'));
  EXPECT_EQ(named.substr(0, head.size()), head);
  EXPECT_TRUE(Has(named, "\"Name\": \"Drivers' room\"")) << named;
  EXPECT_EQ(Admin({"import", File("n.json", named), "--update"}).LastLine(),
            "Made 0 folders and 0 views, updated 0 views, skipped 1 folder and 3 views, failed 0");
}

TEST_F(ImportChoicesTest, AMapPutsOthersInTheirPlace) {
  const std::string original = Export({"110"});
  const std::string foreign = Replaced(Export({"110", "--with-names"}), "\"2031\"", "\"9031\"");
  const QString file = File("foreign.json", Replaced(foreign, "magnified", "mapped"));
  const Outcome written = Admin({"import", file, "--write-map", File("map.json")});
  ExpectSaid(written, 0, "nothing was imported");
  const QString view = "Station/Platforms/Platforms 1–2/Platform 1 edge, mapped";
  EXPECT_EQ(Admin({"show", view}).status, 2);
  ExpectSaid(Admin({"import", file, "--map", File("map.json"), "--dry-run"}), 0,
             "Warning: 1 resource not on this server");
  const std::string map = ReadFile(File("map.json"));
  const std::string open = R"({"Kind":"camera","ID":"9031","Name":"Platform 1, edge 1","To":""})";
  ASSERT_TRUE(Has(map, open)) << map;

  for (const char* entry : {R"({"Kind":"camera","ID":"9031","To":"2031"})",
                            R"({"Kind":"camera","Name":"Platform 1, edge 1","To":"platform 1, edge 1"})"}) {
    const QString filled = File("filled.json", Replaced(map, open, entry));
    const Outcome made = Admin({"import", file, "--map", filled});
    EXPECT_FALSE(Has(made.err, "Warning")) << made.err;
    EXPECT_EQ(Replaced(Export({view}), "mapped", "magnified"), original) << entry;
    EXPECT_EQ(Admin({"rm", view, "--yes"}).status, 0);
  }
}

TEST_F(ImportChoicesTest, AMapWithAMistakeChangesNothing) {
  const QString file = File("e.json", Replaced(Export({"110"}), "\"2031\"", "\"9031\""));
  const std::string before = Export({});
  for (const auto& [status, map, parts] : RowsOf(TABLES "ImportChoices.txt", m_site)) {
    ExpectMessage(Admin({"import", file, "--map", File("map.json", map.toStdString())}), status, parts.at(0));
  }
  EXPECT_EQ(Export({}), before);
}

TEST_F(ImportChoicesTest, AnUpdateMakesViewsEqualToTheFile) {
  const std::string before = Export({"group:2"});
  const QString file = File("before.json", before);
  EXPECT_EQ(Admin({"replace", "2031", "2032"}).status, 0);
  EXPECT_EQ(Admin({"rm", "109", "--yes"}).status, 0);
  const std::string changed = Export({"group:2"});
  ExpectSaid(Admin({"import", file, "--update", "--dry-run"}), 0, "would update view public/Station/Platforms/");
  EXPECT_EQ(Export({"group:2"}), changed);
  const Outcome updated = Admin({"import", file, "--update"});
  EXPECT_EQ(updated.LastLine(), "Made 0 folders and 1 view, updated 2 views, skipped 4 folders and 6 views, failed 0");
  EXPECT_EQ(Export({"group:2"}), before);
}

TEST_F(ImportChoicesTest, SeveralFilesAreOneAndStandardInputIsAFile) {
  const Site copy(false);
  const QString station = File("station.json", Export({"group:1"}));
  const QString platforms = File("platforms.json", Export({"group:2"}));
  const std::string bus = Export({"group:6"});
  EXPECT_EQ(RunAs(copy, "admin", {"import", platforms, station, "-"}, bus).status, 0);
  EXPECT_EQ(RunAs(copy, "admin", {"export", "-o", "-"}).out, Export({"group:1", "group:6"})) << "none is doubled";
}

TEST_F(ImportChoicesTest, WhatFailedGoesIntoAFileForAnotherTime) {
  const std::string good = R"({"Kind":"public","Path":["r"],"Name":"good","AutoCycle":0,"RoundTime":0,"PlanPages":[]})";
  const std::string bad = Replaced(good, "good", "bad\\u0001");
  const QString file =
      File("f.json", R"({"Format":"viewctl-export","Version":1,"Folders":[],"Views":[)" + good + "," + bad + "]}");
  ExpectSaid(Admin({"import", file, "--retry", File("rest.json")}), 1, "1 view left for another time: viewctl import ");
  const std::string rest = ReadFile(File("rest.json"));
  EXPECT_TRUE(Has(rest, "bad") && !Has(rest, "good")) << rest;
  const Outcome again = Admin({"import", File("rest.json", Replaced(rest, "\\u0001", "ly named"))});
  EXPECT_EQ(again.LastLine(), "Made 0 folders and 1 view, skipped 1 folder and 0 views, failed 0");
}

TEST_F(ImportChoicesTest, BrokenOffItSaysSoAndASecondOneCompletesIt) {
  const QString file = File("many.json", Many(900));
  for (const bool isKilled : {false, true}) {
    Running import(m_site.As("admin") + QStringList{"import", file, "--retry", File("rest.json")}, "sample-admin");
    while (import.NextLine().starts_with("skipped")) {
    }
    if (isKilled) {
      import.Kill();
    } else {
      EXPECT_EQ(import.Terminate(), 1);
      const std::string out = import.Output();
      EXPECT_TRUE(Has(out, "interrupted; what was made stays, run it again to go on\nMade ")) << out.substr(0, 2000);
      EXPECT_TRUE(Has(import.Errors(), " left for another time"));
    }
  }
  EXPECT_EQ(Admin({"import", file}).status, 0);
  EXPECT_EQ(Admin({"import", file}).LastLine(), "Made 0 folders and 0 views, skipped 1 folder and 900 views, failed 0");
  const std::string all = Export({"Many"});
  size_t views = 0;
  for (const std::string& line : Lines(all)) views += Has(line, "\"Name\": \"v") ? 1u : 0u;
  EXPECT_EQ(views, 900u) << "none is doubled";
}

}  // namespace
}  // namespace test
