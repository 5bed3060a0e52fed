// SPDX-License-Identifier: Apache-2.0
// Where a resource is used, another one in its place, and the way back.
#include <algorithm>

#include "ViewctlRunner.h"
#include "host/JsonText.h"

namespace test {
namespace {

class FindReplaceTest : public OwnSiteTest {
 protected:
  std::string Export() { return Maria({"export", "-o", "-"}).out; }
  // The lines of a table, blanks between columns as one.
  static std::vector<std::string> Rows(const std::string& text) {
    std::vector<std::string> rows;
    for (const std::string& line : Lines(text)) rows.push_back(QString::fromStdString(line).simplified().toStdString());
    return rows;
  }
};

TEST_F(FindReplaceTest, EveryRoleOfAResourceIsFound) {
  for (const auto& [status, command, expected] : RowsOf(TABLES "FindReplace.txt", m_site)) {
    const Outcome outcome = Maria(Words(command));
    EXPECT_EQ(outcome.status, status) << outcome;
    EXPECT_EQ(outcome.err, "");
    for (const std::string& start : expected) {
      EXPECT_TRUE(std::ranges::any_of(Rows(outcome.out), [&](const auto& row) { return row.starts_with(start); }))
          << "no " << start << " of " << outcome;
    }
  }
  ExpectMessage(Maria({"find", "フェリー*"}), 0, "No view uses \"フェリー*\"; * stands for any part of a name");
  // Behind "--" nothing is an option, and so none without a value.
  ExpectMessage(Maria({"find", "--", "--x="}), 0, "No view uses \"--x=\"; * stands for any part of a name");
  const std::string all = Maria({"find", "*", "--json"}).out;
  EXPECT_TRUE(Has(all, R"("ID":"2031")"));
  for (const char* none : {R"("ID":"-1")", R"("ID":"0")", R"("ID":"")", R"("Kind":"")"}) {
    EXPECT_FALSE(Has(all, none)) << none << " is no resource";
  }
  EXPECT_EQ(Maria({"find", "2208", "--json"}).out,
            "[\n{\"View\":\"120\",\"Page\":1,\"Window\":4,\"Role\":\"related\",\"Kind\":\"door\",\"ID\":\"2208\","
            "\"Name\":\"Drivers' room\",\"Site\":\"2\",\"Shared\":false,\"Path\":\"public/Bus terminal/Bus hall\"}]\n");
  const auto wide = Rows(Maria({"find", "2031", "--kind", "camera", "-o", "wide"}).out);
  ASSERT_GT(wide.size(), 2u);
  EXPECT_EQ(wide[0], "VIEW PAGE WINDOW ROLE KIND ID RESOURCE SITE SHARED PATH");
  EXPECT_EQ(wide[1], "140 2 5 shown camera 2031 Platform 1, edge 1 1 yes shared/Site acceptance");
  EXPECT_EQ(wide[2], "107 1 0 cycle camera 2031 Platform 1, edge 1 1 no public/Station/Platforms/All platforms");
}

TEST_F(FindReplaceTest, WhatTheServerHasIsListedByKindAndName) {
  const auto all = Rows(Maria({"resources"}).out);
  ASSERT_EQ(all.size(), 196u) << "a head, 183 elements, 12 areas";
  EXPECT_EQ(all[0], "KIND ID NAME");
  EXPECT_EQ(all[1], "camera 2001 Forecourt, taxi rank");
  EXPECT_EQ(all[179], "map 2501 Hub overview");
  EXPECT_EQ(all.back(), "area 3012 🚲 Bike park");
  EXPECT_EQ(Rows(Maria({"resources", "-o", "wide"}).out)[0], "KIND ID SITE NAME");
  for (const auto& [status, command, rows] : RowsOf(TABLES "FindReplace.txt", m_site)) {
    const Outcome outcome = Maria(Words(command));
    EXPECT_EQ(outcome.status, status) << outcome;
    EXPECT_EQ(Rows(outcome.out), rows);
  }
  EXPECT_EQ(Maria({"resources", "--kind", "web-page", "--name", "x"}).err,
            "The server has no web-page \"x\"; * stands for any part of a name\n");
  // One that no view shows is found by its name.
  EXPECT_EQ(Maria({"replace", "--kind", "door", "2208", "Stairwell A", "--dry-run"}).LastLine(),
            "Would change 1 view, left 0, failed 0");
}

TEST_F(FindReplaceTest, AReplacementChangesNothingElseAndIsTakenBack) {
  const std::string before = Export();
  const QStringList replace = {"replace", "2031", "2032", "--undo", File("undo.json")};
  const Outcome dry = Maria(replace + QStringList{"--dry-run"});
  EXPECT_TRUE(dry.LastLine().starts_with("Would change ")) << dry;
  EXPECT_EQ(dry.err, "");
  EXPECT_EQ(Export(), before);
  EXPECT_FALSE(QFile::exists(File("undo.json")));

  const Outcome done = Maria(replace);
  EXPECT_EQ(Lines(done.out).size(), Lines(dry.out).size());
  EXPECT_EQ(done.err, "Editing " + m_site.Url() + " as maria\n");
  const auto left = Rows(Maria({"find", "2031", "--kind", "camera"}).out);
  ASSERT_EQ(left.size(), 2u);
  EXPECT_TRUE(left[1].starts_with("140 ")) << "what another user shared stays: " << left[1];
  std::string expected = before;
  const std::string old = "\"ResourceID\": \"2031\"";
  for (size_t at = 0; (at = expected.find(old, at)) != std::string::npos;) {
    expected.replace(at, old.size(), "\"ResourceID\": \"2032\"");
  }
  EXPECT_EQ(Export(), expected);

  ExpectMessage(Maria(replace), 2, "is there already");  // an undo file is not overwritten
  const Outcome wouldUndo = Maria({"undo", File("undo.json"), "--dry-run"});
  ExpectSaid(wouldUndo, 0, "would restore view 110 ");
  EXPECT_EQ(wouldUndo.err, "");
  EXPECT_EQ(Export(), expected);
  ExpectSaid(Maria({"undo", File("undo.json")}), 0, "restored view 107 public/Station/Platforms/All platforms\n");
  EXPECT_EQ(Export(), before);
  ExpectSaid(Maria({"undo", File("undo.json")}), 0, "is as it was before");
}

TEST_F(FindReplaceTest, WhatWasChangedSinceIsLeftUnlessForced) {
  EXPECT_EQ(Maria({"replace", "2031", "2032", "--undo", File("undo.json"), "--in", "group:3"}).status, 0);
  EXPECT_EQ(Maria({"replace", "2032", "2033", "--in", "Station"}).status, 0);
  const Outcome left = Maria({"undo", File("undo.json")});
  EXPECT_TRUE(left.LastLine().starts_with("Restored 0 views,")) << left;
  ExpectSaid(left, 0, "was changed since; --force");
  ExpectSaid(Maria({"undo", File("undo.json"), "--force"}), 0, "left 0, failed 0");

  // Views that are gone do not keep it from those behind them.
  std::string file = ReadFile(File("undo.json"));
  const std::string views = R"("Views":[)";
  for (int id = 9001; id <= 9006; ++id) {
    file.insert(file.find(views) + views.size(),
                R"({"ID":")" + std::to_string(id) + R"(","Name":"gone","Before":[],"After":[]},)");
  }
  const Outcome gone = Maria({"undo", File("gone.json", file)});
  ExpectSaid(gone, 0, "left view 9001 \"gone\": ");
  ExpectSaid(gone, 0, "is as it was before");
  ExpectSaid(Maria({"find", "2031"}), 0, "\n110 ");  // it is back
}

TEST_F(FindReplaceTest, RelationsAndDoorsAreReplacedAndOthersViewsLeft) {
  EXPECT_EQ(Maria({"replace", "--kind", "door", "drivers' room", "2201"}).status, 0);
  ExpectSaid(Maria({"show", "120"}), 0, "related door 2201 \"");
  EXPECT_EQ(Maria({"find", "2208"}).out, "");
  // kenji's view, shared with maria, is not hers to edit.
  const std::string kenjis = Maria({"show", "137", "--json"}).out;
  rapidjson::Document detail;
  ASSERT_TRUE(host::ParseJson(kenjis, detail));
  const QString camera = QString::fromStdString(host::TextOf(detail["PlanPages"][0]["PlanItems"][0], "ResourceID"));
  ExpectSaid(Maria({"replace", camera, camera == "2001" ? "2002" : "2001"}), 0, "left view 137 ");
  EXPECT_EQ(Maria({"show", "137", "--json"}).out, kenjis);

  const char* turned = R"({"Name":"turned","Type":0,"PlanPages":[{"PlanItems":[{"Sequence":1,"ResourceType":1001,
      "ResourceID":"2031","SiteID":"1","PresetId":0,"CruiseIndex":2,"TrackIndex":0}]}]})";
  EXPECT_EQ(Maria({"call", "AddPlan", QString(turned).remove('\n')}).status, 0);
  ExpectSaid(Maria({"replace", "2031", "2032", "--dry-run"}), 0, "turned: 1 place; check that it fits: cruise 2\n");
}

// Windows have both as negative numbers, cycles as large ones.
TEST_F(FindReplaceTest, IdsAbove2To31AndCamerasAtNoSiteAreReplacedAndPutBack) {
  const std::string seed = R"({"Users":[{"ID":2,"Name":"maria","Password":"sample-maria"}],"Areas":[],"ViewGroups":[],)"
                           R"("Elements":[{"ID":7,"Type":1001,"Name":"Near","SiteID":1},)"
                           R"({"ID":8,"Type":1001,"Name":"Far"}],"Views":[]})";
  const Site site(seed);
  const auto run = [&site](const QStringList& command) { return RunAs(site, "maria", command); };
  const char* view = R"({"Name":"V","Type":1,"PlanPages":[{"PlanItems":[{"Sequence":1,"ResourceType":7001,)"
                     R"("ResourceID":"5","RelateResourceType":1,"RelateResourceID":5,"CycleInfo":{"cycle_time":5,)"
                     R"("cycle_type":0,"CycleResourceID":[{"SiteID":"1","ResourceID":"7"}]}}]}]})";
  ASSERT_EQ(run({"call", "AddPlan", view}).status, 0);
  const std::string before = run({"export", "-o", "-"}).out;
  ExpectSaid(run({"replace", "Near", "Far", "--undo", File("camera.json")}), 0, ": 1 place\n");
  ExpectSaid(run({"replace", "--kind", "map", "5", "4000000000", "--undo", File("map.json")}), 0, ": 2 places\n");
  EXPECT_EQ(Rows(run({"find", "4000000000"}).out).size(), 3u) << "what the window shows, and its relation";
  for (const char* part : {", id 4000000000\n", "related map 4000000000\n"}) {
    ExpectSaid(run({"show", "private/V"}), 0, part);
  }
#ifndef _WIN32  // there is no viewdraw
  ASSERT_EQ(run({"report", "-o", File("site.html")}).status, 0);
  const std::string report = ReadFile(File("site.html"));
  EXPECT_TRUE(Has(report, "4000000000") && !Has(report, "-294967296"));
#endif
  for (const char* file : {"map.json", "camera.json"}) ExpectSaid(run({"undo", File(file)}), 0, "restored view");
  EXPECT_EQ(run({"export", "-o", "-"}).out, before);
}

TEST_F(FindReplaceTest, WhatCannotBeReplacedIsToldAndNothingIsChanged) {
  const std::string before = Export();
  File("later.json", R"({"Format":"viewctl-undo","Version":2})");
  File("elsewhere.json", R"({"Format":"viewctl-undo","Version":1,"Server":"http://x"})");
  File("no-id.json",
       R"({"Format":"viewctl-undo","Version":1,"Views":[{"ID":"110","Before":[],"After":[]},{"ID":"x"}]})");
  for (const auto& [status, command, parts] : RowsOf(TABLES "FindReplace.txt", m_site)) {
    ExpectMessage(Maria(Words(command)), status, parts.at(0));
  }
  EXPECT_EQ(Export(), before);
  EXPECT_FALSE(QFile::exists(File("undo.json")));
  EXPECT_EQ(Maria({"replace", "7778", "2032"}).LastLine(), "Changed 0 views, left 0, failed 0");
}

}  // namespace
}  // namespace test
