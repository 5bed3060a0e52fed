// SPDX-License-Identifier: Apache-2.0
// How output looks: for programs, in pipes, on terminals, and when nobody wants to read much.
#include <algorithm>

#include "TerminalRunner.h"
#include "host/JsonText.h"

namespace test {
namespace {

class OutputTest : public OwnSiteTest {};

TEST_F(OutputTest, WhatListsOrReportsDoesSoAsJsonToo) {
  File("export", Maria({"export", "Station", "-o", "-"}).out);
  for (const Row& row : RowsOf(TABLES "Output.txt", m_site, "lists")) {
    const Outcome outcome = Maria(Words(row.command));
    rapidjson::Document document;
    EXPECT_TRUE(host::ParseJson(outcome.out, document) && document.IsArray()) << outcome;
    ExpectRow(outcome, row);
  }
  for (const Row& row : RowsOf(TABLES "Output.txt", m_site, "reports, with their last lines")) {
    const Outcome outcome = Maria(Words(row.command + " --json"));
    ExpectRow(outcome, row);
    EXPECT_TRUE(Has(outcome.LastLine(), row.parts.back())) << outcome;
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
  for (const auto& [status, command, said] : RowsOf(TABLES "Output.txt", m_site)) {
    const Outcome outcome = Maria(Words(command + " --quiet"));
    EXPECT_EQ(outcome.status, status) << outcome;
    EXPECT_EQ(outcome.out + outcome.err, said.at(0)) << outcome.command;
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

TEST_F(OutputTest, IsAsWideAsTheTerminalAndPlainWhereItIsPipedOn) {
  const QString viewctl = "stty cols 60; '" VIEWCTL_FILE "' " + m_site.As("maria").join(' ') + " ";
  const auto said = [&](const QString& command) {
    return OnTerminal({"-c", viewctl + command}, "sample-maria", {}, "sh").Finish().out;
  };
  const std::string page = said("draw 110"), tree = said("tree | cat");
  EXPECT_TRUE(Has(page, "\r\n┌─────────────────────────────────────┬──────────────────┐\r\n")) << page;
  EXPECT_TRUE(Has(tree, "Public views\r\n") && !Has(tree, "\033[1")) << tree;
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
