// SPDX-License-Identifier: Apache-2.0
// What may stand at the end of a line that is being typed, and the shells that ask.
#include <QFile>
#include <algorithm>
#include <regex>

#include "../Cases.h"
#include "TerminalRunner.h"

namespace test {
namespace {

class CompletionTest : public SiteTest {
 protected:
  // For a shell: where to log in.
  static QString Environment() {
    return "export VIEWCTL_SERVER=" + TheSite().Address() +
           " VIEWCTL_USER=maria VIEWCTL_PASSWORD=sample-maria LC_ALL=C.UTF-8\n";
  }
  static Outcome Complete(const QString& line) {
    return RunShell(Environment() + "viewctl __complete --line \"$1\"", line);
  }
  static bool IsInstalled(const QString& shell) { return RunShell("command -v " + shell).status == 0; }
};

TEST_F(CompletionTest, EachPlaceOfALineTakesWhatFitsThere) {
  for (const auto& [line, expected] : testing_support::Cases(TABLES "Completion.txt")) {
    const Outcome outcome = Complete(QString::fromStdString(line));
    const std::string offered = "\n" + std::regex_replace(outcome.out, std::regex("\t"), "  ");
    for (const std::string& one : expected) EXPECT_TRUE(Has(offered, "\n" + one + "\n")) << one << " of " << outcome;
    EXPECT_EQ(outcome.out.empty(), expected.empty()) << outcome;
    EXPECT_EQ(outcome.err, "") << line;
  }
  for (const char* line : {"viewctl import ", "viewctl\timport\n", "viewctl export -o ", "viewctl --data "}) {
    EXPECT_EQ(Complete(line).out, ":files\n") << line;
  }
  EXPECT_EQ(Lines(Complete("viewctl show Station/Fore").out).size(), 1u);
  for (const char* line : {"viewctl tree Station/", "viewctl watch --group Station/"}) {
    EXPECT_FALSE(Has(Complete(line).out, "Forecourt")) << line << " takes a folder";
  }
}

TEST_F(CompletionTest, WhatCannotBeAskedIsNotTold) {
  for (const char* line : {"viewctl --server http://127.0.0.1:1 show Sta", "viewctl --user nobody show Sta"}) {
    const Outcome outcome = Complete(line);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out + outcome.err, "") << line;
  }
  // On a terminal, where a password would be asked for.
  OnTerminal ask({"__complete", "--line", "viewctl show Sta"}, {},
                 {"VIEWCTL_SERVER=" + TheSite().Address(), "VIEWCTL_USER=maria"});
  EXPECT_EQ(ask.Finish().out, "");
  const QTemporaryDir folder;
  const QString store = folder.filePath("new");
  EXPECT_EQ(test::Run({"__complete", "--line", "viewctl --data " + store + " show p"}).out,
            "public/\tPublic views\nprivate/\tMy views\n");
  EXPECT_FALSE(QFile::exists(store)) << "no store is made";
}

TEST_F(CompletionTest, BashInsertsNamesAsItsLinesQuoteThem) {
  for (const auto& [line, expected] : testing_support::Cases(TABLES "Completion.txt")) {
    const QString script = Environment() +
                           "source <(viewctl completion bash)\nCOMP_LINE=$1 COMP_POINT=${#1}\n"
                           "COMP_WORDS=(viewctl \"${1##* }\") COMP_CWORD=1\n"
                           "[[ $1 == *'\"'* ]] && COMP_WORDS[1]=\\\"x\n_viewctl; printf '%s\\n' \"${COMPREPLY[@]}\"";
    const Outcome outcome = RunShell(script, QString::fromStdString(line), "bash");
    EXPECT_EQ(outcome.out, expected.at(0) + "\n") << outcome;
  }
}

TEST_F(CompletionTest, OtherShellsInsertThemToo) {
  if (IsInstalled("fish")) {
    const QString script = "viewctl completion fish | source; complete -C 'viewctl show Station/For'";
    const Outcome fish = RunShell(Environment() + "exec fish -c \"$1\"", script);
    EXPECT_EQ(fish.out, "Station/Forecourt\tview 102\n") << fish;
  }
  if (IsInstalled("zsh")) {
    const QTemporaryDir home;
    const QString path = "PATH=$(dirname '" VIEWCTL_FILE "'):$PATH; ";
    OnTerminal zsh({"-c", path + Environment() + "cd '" + home.path() + "'; PS1='ready> ' exec zsh -f -i"}, {}, {},
                   "sh");
    zsh.SaysUntil("ready> ");
    zsh.Type("autoload -U compinit && compinit -u && source <(viewctl completion zsh); echo lo''aded\n");
    EXPECT_TRUE(Has(zsh.SaysUntil("loaded"), "loaded"));
    zsh.Type("echo got \"$(viewctl show Bus\\ terminal/Bus\t)\"\n");
    zsh.Type("exit\n");
    ExpectSaid(zsh.Finish(), 0, "\"Bus hall\"  (view 120)");
  }
}

}  // namespace
}  // namespace test
