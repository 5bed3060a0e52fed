// SPDX-License-Identifier: Apache-2.0
// How output looks: for programs, in pipes, on terminals, and when nobody wants to read much.
#include <algorithm>

#include "TerminalRunner.h"
#include "host/JsonText.h"

namespace test {
namespace {

class OutputTest : public testing::Test {
 protected:
  Outcome Maria(const QStringList& command) { return RunAs(m_site, "maria", command); }
  Site m_site;
};

TEST_F(OutputTest, WhatListsOrReportsDoesSoAsJsonToo) {
  WriteFile(m_site.Folder() + "/export", Maria({"export", "Station", "-o", "-"}).out);
  const QString file = QString::fromStdString(m_site.Folder()) + "/export";
  const std::pair<QStringList, std::vector<const char*>> lists[] = {
      {{"users", "--json"}, {R"({"ID":2,"Online":true,"PTZ":1,"Name":"maria"})"}},
      {{"find", "2208", "-o", "json"}, {R"("Role":"related","Kind":"door","ID":"2208",)", R"("Shared":false)"}},
      {{"tree", "-o", "json"}, {R"("Name":"Forecourt")"}},
      {{"servers", "--json"}, {"[]"}},
      {{"resources", "--kind", "door", "--json"}, {R"({"Kind":"door","ID":"2208","Name":"Drivers' room","Site":"2"})"}},
  };
  for (const auto& [command, parts] : lists) {
    const Outcome outcome = Maria(command);
    rapidjson::Document document;
    EXPECT_TRUE(host::ParseJson(outcome.out, document) && document.IsArray()) << outcome.out << outcome.err;
    for (const char* part : parts) EXPECT_TRUE(Has(outcome.out, part)) << part << "\n" << outcome.out;
  }
  const std::tuple<QStringList, int, const char*, const char*> reports[] = {
      {{"mkdir", "Station/A"},
       0,
       R"({"Outcome":"made","Kind":"group","ID":"13",)",
       R"({"Done":1,"Left":0,"Failed":0})"},
      {{"mkdir", "Station/A"}, 1, R"("Detail":"is there already"})", R"({"Done":0,"Left":0,"Failed":1})"},
      {{"mv", "110", "Station/A", "--dry-run"},
       0,
       R"({"Outcome":"would move","Kind":"view","ID":"110",)",
       R"("Done":1)"},
      {{"cp", "110", "Station/A"}, 0, R"({"Outcome":"copied","Kind":"view","ID":"110",)", R"("Done":1)"},
      {{"rm", "Station/A", "--yes"}, 0, R"({"Outcome":"deleted","Kind":"group","ID":"13",)", R"("Done":1)"},
      {{"share", "132", "kenji", "keni"},
       1,
       R"({"Outcome":"failed","Kind":"user","ID":"","Text":"with keni",)",
       R"({"Done":1,"Left":0,"Failed":1})"},
      {{"replace", "2031", "2032", "--undo", file + "-undo"}, 0, R"("Outcome":"changed","Kind":"view",)", R"("Done":)"},
      {{"undo", file + "-undo"}, 0, R"({"Outcome":"restored","Kind":"view",)", R"("Failed":0})"},
      {{"export", "-o", file + "-2"}, 0, "", R"({"Views":36,"LeftOut":3,"ReplacedBytesIn":""})"},
      {{"report", "-o", file + ".html"}, 0, "", R"({"Views":39,"Resources":)"},
      {{"import", file},
       0,
       R"({"Outcome":"skipped","Kind":"folder","Place":"public / Station","Reason":"is there","Path":"public/Station"})",
       R"({"MadeFolders":0,"MadeViews":0,"UpdatedViews":0,"SkippedFolders":5,"SkippedViews":18,"Failed":0,)"},
  };
  for (const auto& [command, status, part, sum] : reports) {
    const Outcome outcome = Maria(command + QStringList{"--json"});
    EXPECT_EQ(outcome.status, status) << outcome.err;
    const auto lines = Lines(outcome.out);
    EXPECT_TRUE(Has(outcome.out, part) && !lines.empty() && Has(lines.back(), sum)) << part << "\n" << outcome.out;
    for (const std::string& line : lines) {
      rapidjson::Document document;
      EXPECT_TRUE(host::ParseJson(line, document) && document.IsObject()) << line;
    }
  }
}

TEST_F(OutputTest, WideListsSayMore) {
  EXPECT_TRUE(Has(Maria({"tree", "Bus terminal", "-o", "wide"}).out, "Bus hall  (view 120)  1 page, "));
  EXPECT_TRUE(Has(Maria({"find", "2208", "-o", "wide"}).out, "RESOURCE       SITE  SHARED  PATH"));
  EXPECT_TRUE(Has(Maria({"resources", "--kind", "elevator", "-o", "wide"}).out, "KIND      ID    SITE  NAME\n"));
  EXPECT_EQ(Maria({"tree", "-o", "wider"}).status, 2);
  EXPECT_EQ(Maria({"tree", "-o", "json"}).out, Maria({"tree", "--json"}).out);
}

TEST_F(OutputTest, AsciiDrawsWithSignsThatEveryTerminalHas) {
  const std::string tree = Maria({"tree", "Bus terminal", "--ascii"}).out;
  EXPECT_TRUE(Has(tree, "\n`-- Depot at night  (view 121)\n") && Has(tree, "\n|-- ")) << tree;
  const std::string page = Maria({"draw", "121", "--ascii"}).out;
  EXPECT_EQ(std::count_if(page.begin(), page.end(), [](char c) { return c < 0; }), 0) << page;
}

TEST_F(OutputTest, QuietLeavesOutAllButFailures) {
  const std::pair<QStringList, std::string> cases[] = {
      {{"mkdir", "Station/A"}, ""},
      {{"export", "Station", "-o", QString::fromStdString(m_site.Folder()) + "/all"}, ""},
      {{"import", QString::fromStdString(m_site.Folder()) + "/all"}, ""},
      {{"mkdir", "Station/A", "Station/B"},
       "failed folder public/Station/A: is there already\nMade 1 folder, left 0, failed 1\n"},
  };
  for (const auto& [command, said] : cases) {
    const Outcome outcome = Maria(command + QStringList{"--quiet"});
    EXPECT_EQ(outcome.out + outcome.err, said) << command.join(' ').toStdString();
  }
}

TEST_F(OutputTest, ColoursAndProgressAreForTerminalsThatWantThem) {
  const std::string red = "\033[31m", bold = "\033[1;34m", progress = " of ";
  const std::tuple<QStringList, QStringList, bool, bool> cases[] = {{{}, {}, true, true},
                                                                    {{"NO_COLOR=1"}, {}, false, true},
                                                                    {{"TERM=dumb"}, {}, false, true},
                                                                    {{}, {"--quiet"}, true, false}};
  for (const auto& [variables, options, hasColours, hasProgress] : cases) {
    OnTerminal tree(m_site.As("maria") + QStringList{"tree"} + options, "sample-maria", variables);
    EXPECT_EQ(Has(tree.Finish().out, bold), hasColours);
    OnTerminal refused(m_site.As("maria") + QStringList{"mkdir", "Station"} + options, "sample-maria", variables);
    const std::string said = refused.Finish().out;
    EXPECT_EQ(Has(said, red + "failed folder"), hasColours) << said;
    OnTerminal find(m_site.As("maria") + QStringList{"find", "2208"} + options, "sample-maria", variables);
    EXPECT_EQ(Has(find.Finish().out, progress), hasProgress);
  }
  const Outcome pipe = Maria({"find", "2208"});
  EXPECT_FALSE(Has(pipe.out + pipe.err, "\033") || Has(pipe.out + pipe.err, progress)) << pipe.out << pipe.err;
}

TEST_F(OutputTest, OnATerminalRmAsksBeforeItDeletes) {
  for (const char* answer : {"\n", "no\n", "yes\n"}) {
    OnTerminal rm(m_site.As("maria") + QStringList{"rm", "110", "111"}, "sample-maria");
    EXPECT_TRUE(Has(rm.SaysUntil("[y/N] "), "Delete 2 things? [y/N] "));
    rm.Type(answer);
    const Outcome outcome = rm.Finish();
    const bool isDeleted = *answer == 'y';
    EXPECT_EQ(outcome.status, isDeleted ? 0 : 2) << outcome.out;
    EXPECT_EQ(Has(outcome.out, "Nothing was deleted\r\n"), !isDeleted) << outcome.out;
    EXPECT_EQ(Maria({"show", "110"}).status == 0, !isDeleted);
  }
}

}  // namespace
}  // namespace test
