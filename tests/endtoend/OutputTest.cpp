// SPDX-License-Identifier: Apache-2.0
// How output looks: for programs, in pipes, on terminals, and when nobody wants to read much.
#include <algorithm>

#include "TerminalRunner.h"
#include "host/JsonText.h"

namespace test {
namespace {

class OutputTest : public OwnSiteTest {};

TEST_F(OutputTest, WhatListsOrReportsDoesSoAsJsonToo) {
  const QString file = File("export", Maria({"export", "Station", "-o", "-"}).out);
  const std::pair<const char*, const char*> lists[] = {
      {"users --json", R"({"ID":2,"Online":true,"PTZ":1,"Name":"maria"})"},
      {"find 2208 -o json", R"("Role":"related","Kind":"door","ID":"2208",)"},
      {"tree -o json", R"("Name":"Forecourt")"},
      {"resources --kind door --json", R"({"Kind":"door","ID":"2208","Name":"Drivers' room","Site":"2"})"},
  };
  for (const auto& [command, part] : lists) {
    const Outcome outcome = Maria(Words(command));
    rapidjson::Document document;
    EXPECT_TRUE(host::ParseJson(outcome.out, document) && document.IsArray()) << outcome;
    ExpectSaid(outcome, 0, part);
  }
  const std::tuple<QString, int, const char*, const char*> reports[] = {
      {"mkdir Station/A", 0, R"({"Outcome":"made","Kind":"group","ID":"13",)", R"({"Done":1,"Left":0,"Failed":0})"},
      {"mkdir Station/A", 1, R"("Detail":"is there already"})", R"({"Done":0,"Left":0,"Failed":1})"},
      {"mv 110 Station/A --dry-run", 0, R"({"Outcome":"would move","Kind":"view","ID":"110",)", R"("Done":1)"},
      {"cp 110 Station/A", 0, R"({"Outcome":"copied","Kind":"view","ID":"110",)", R"("Done":1)"},
      {"rm Station/A --yes", 0, R"({"Outcome":"deleted","Kind":"group","ID":"13",)", R"("Done":1)"},
      {"share 132 kenji keni", 1, R"({"Outcome":"failed","Kind":"user","ID":"","Text":"with keni",)",
       R"({"Done":1,"Left":0,"Failed":1})"},
      {"replace 2031 2032 --undo " + file + "-undo", 0, R"("Outcome":"changed","Kind":"view",)", R"("Done":)"},
      {"undo " + file + "-undo", 0, R"({"Outcome":"restored","Kind":"view",)", R"("Failed":0})"},
      {"export -o " + file + "-2", 0, "", R"({"Views":36,"LeftOut":3,"ReplacedBytesIn":""})"},
      {"report -o " + file + ".html", 0, "", R"({"Views":39,"Resources":)"},
      {"import " + file, 0,
       R"({"Outcome":"skipped","Kind":"folder","Place":"public / Station","Reason":"is there","Path":"public/Station"})",
       R"({"MadeFolders":0,"MadeViews":0,"UpdatedViews":0,"SkippedFolders":5,"SkippedViews":18,"Failed":0,)"},
  };
  for (const auto& [command, status, part, sum] : reports) {
    const Outcome outcome = Maria(Words(command + " --json"));
    ExpectSaid(outcome, status, part);
    EXPECT_TRUE(Has(outcome.LastLine(), sum)) << outcome;
    for (const std::string& line : Lines(outcome.out)) {
      rapidjson::Document document;
      EXPECT_TRUE(host::ParseJson(line, document) && document.IsObject()) << line;
    }
  }
}

TEST_F(OutputTest, AsciiDrawsWithSignsThatEveryTerminalHas) {
  const std::string tree = Maria({"tree", "Bus terminal", "--ascii"}).out;
  EXPECT_TRUE(Has(tree, "\n`-- Depot at night  (view 121)\n") && Has(tree, "\n|-- ")) << tree;
  const std::string page = Maria({"draw", "121", "--ascii"}).out;
  EXPECT_TRUE(std::ranges::none_of(page, [](char c) { return c < 0; })) << page;
}

TEST_F(OutputTest, QuietLeavesOutAllButFailures) {
  const std::pair<QString, std::string> cases[] = {
      {"mkdir Station/A", ""},
      {"export Station -o " + File("all"), ""},
      {"import " + File("all"), ""},
      {"mkdir Station/A Station/B",
       "failed folder public/Station/A: is there already\nMade 1 folder, left 0, failed 1\n"},
  };
  for (const auto& [command, said] : cases) {
    const Outcome outcome = Maria(Words(command + " --quiet"));
    EXPECT_EQ(outcome.out + outcome.err, said) << outcome.command;
  }
}

TEST_F(OutputTest, ColoursAndProgressAreForTerminalsThatWantThem) {
  const std::string red = "\033[31m", bold = "\033[1;34m", progress = "\rReading views 1 of 39\r";
  const std::tuple<QStringList, QString, bool, bool> cases[] = {{{}, "", true, true},
                                                                {{"NO_COLOR=1"}, "", false, true},
                                                                {{"TERM=dumb"}, "", false, true},
                                                                {{}, "--quiet", true, false}};
  for (const auto& [variables, option, hasColours, hasProgress] : cases) {
    const auto said = [&, &option = option, &variables = variables](const QString& command) {
      return OnTerminal(m_site.As("maria") + Words(command + " " + option), "sample-maria", variables).Finish().out;
    };
    EXPECT_EQ(Has(said("tree"), bold), hasColours);
    EXPECT_EQ(Has(said("mkdir Station"), red + "failed folder"), hasColours);
    EXPECT_EQ(Has(said("find 2208"), progress), hasProgress);
  }
  const Outcome pipe = Maria({"find", "2208"});
  EXPECT_FALSE(Has(pipe.out + pipe.err, "\033") || Has(pipe.out + pipe.err, progress)) << pipe;
}

TEST_F(OutputTest, OnATerminalRmAsksBeforeItDeletes) {
  const std::pair<std::string, QString> cases[] = {
      {"\n", "110 111"}, {"no\n", "110 111"}, {"yes\n", "110 111"}, {"Y\n", "102 103"}};
  for (const auto& [answer, views] : cases) {
    OnTerminal rm(m_site.As("maria") + Words("rm " + views), "sample-maria");
    EXPECT_TRUE(Has(rm.SaysUntil("[y/N] "), "Delete 2 things? [y/N] "));
    rm.Type(answer);
    const Outcome outcome = rm.Finish();
    const bool isDeleted = answer[0] == 'y' || answer[0] == 'Y';
    EXPECT_EQ(outcome.status, isDeleted ? 0 : 2) << outcome.out;
    EXPECT_EQ(Has(outcome.out, "Nothing was deleted\r\n"), !isDeleted) << outcome.out;
    EXPECT_EQ(Maria(Words("show " + views)).status == 0, !isDeleted);
  }
}

}  // namespace
}  // namespace test
