// SPDX-License-Identifier: Apache-2.0
// What may stand at the end of a line that is being typed, and the shells that ask.
#include <QFile>
#include <algorithm>

#include "TerminalRunner.h"

namespace test {
namespace {

class CompletionTest : public SiteTest {
 protected:
  // For a shell: where to log in, and viewctl by its name.
  static QString Environment() {
    return "export VIEWCTL_SERVER=" + QString::fromStdString(TheSite().Url()) +
           " VIEWCTL_USER=maria VIEWCTL_PASSWORD=sample-maria LC_ALL=C.UTF-8; PATH=$(dirname '" VIEWCTL_FILE
           "'):$PATH\n";
  }
  static Outcome Complete(const std::string& line) {
    const QString ask = Environment() + "viewctl __complete --line \"$1\"";
    return test::Run({"-c", ask, "sh", QString::fromStdString(line)}, {}, {}, "sh");
  }
  static bool IsInstalled(const QString& shell) {
    return test::Run({"-c", "command -v " + shell}, {}, {}, "sh").status == 0;
  }
};

TEST_F(CompletionTest, EachPlaceOfALineTakesWhatFitsThere) {
  const std::pair<std::string, std::vector<const char*>> cases[] = {
      {"viewctl sho", {"show\tviews in full"}},
      {"viewctl --user maria exp", {"export\tviews and folders as a file for any server"}},
      {"viewctl tree --dep", {"--depth\thow many levels below the top are shown"}},
      {"viewctl tree --user", {"--user\twho logs in; else VIEWCTL_USER, where there is a server"}},
      {"viewctl show Sta", {"Station/\tgroup 1"}},
      {"viewctl show Station/Fore", {"Station/Forecourt\tview 102"}},
      {"viewctl show \"Station/Platforms/Platforms 1–2/Platform 1 e",
       {"Station/Platforms/Platforms 1–2/Platform 1 edge, magnified\tview 110"}},
      {"viewctl show 102 private/My\\ rounds/Cash", {"private/My rounds/Cash office\tview 132"}},
      {"viewctl tree Station/", {"Station/Platforms/\tgroup 2"}},
      {"viewctl watch --group Bus", {"Bus terminal/\tgroup 6"}},
      {"viewctl mv 102 pub", {"public/\tPublic views"}},
      {"viewctl rm Station/", {"Station/Forecourt\tview 102", "Station/Platforms/\tgroup 2"}},
      {"viewctl share 132 ken", {"kenji"}},
      {"viewctl find x --kind ca", {"camera"}},
      {"viewctl find Driv", {"Drivers' room\tdoor 2208"}},
      {"viewctl replace 2031 203", {"2032\tcamera Platform 1, edge 2"}},
      {"viewctl find x -o w", {"wide"}},
      {"viewctl call GetPlanD", {"GetPlanDetail"}},
      {"viewctl help sho", {"show"}},
      {"viewctl import ", {":files"}},
      {"viewctl export -o ", {":files"}},
      {"viewctl completion f", {"fish"}},
      {"viewctl nonsense Sta", {}},
      {"viewctl show Nowhere/", {}},
  };
  for (const auto& [line, expected] : cases) {
    const Outcome outcome = Complete(line);
    for (const char* one : expected) EXPECT_TRUE(Has("\n" + outcome.out, "\n" + std::string(one) + "\n")) << line;
    EXPECT_EQ(outcome.out.empty(), expected.empty()) << line << "\n" << outcome.out;
    EXPECT_EQ(outcome.err, "") << line;
  }
  EXPECT_EQ(Lines(Complete("viewctl show Station/Fore").out).size(), 1u);
  for (const char* line : {"viewctl tree Station/", "viewctl watch --group Station/"}) {
    EXPECT_FALSE(Has(Complete(line).out, "Forecourt")) << line << " takes a folder";
  }
}

TEST_F(CompletionTest, WhatCannotBeAskedIsNotTold) {
  const std::string other = "viewctl --server http://127.0.0.1:1 show Sta";
  for (const std::string& line : {other, std::string("viewctl --user nobody show Sta")}) {
    const Outcome outcome = Complete(line);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out + outcome.err, "") << line;
  }
  // On a terminal, where a password would be asked for.
  OnTerminal ask({"__complete", "--line", "viewctl show Sta"}, {},
                 {"VIEWCTL_SERVER=" + QString::fromStdString(TheSite().Url()), "VIEWCTL_USER=maria"});
  EXPECT_EQ(ask.Finish().out, "");
  const QTemporaryDir folder;
  const QString store = folder.filePath("new");
  EXPECT_EQ(test::Run({"__complete", "--line", "viewctl --data " + store + " show p"}).out,
            "public/\tPublic views\nprivate/\tMy views\n");
  EXPECT_FALSE(QFile::exists(store)) << "no store is made";
}

TEST_F(CompletionTest, BashInsertsNamesAsItsLinesQuoteThem) {
  const std::pair<std::string, std::string> cases[] = {
      {"viewctl show Station/Platforms/Platforms\\ 1–2/Platform\\ 1\\ e",
       "Station/Platforms/Platforms\\ 1–2/Platform\\ 1\\ edge\\,\\ magnified"},
      {"viewctl show \"Bus terminal/Bus", "Bus terminal/Bus hall"},
      {"viewctl --server http://x:1 shar", "share"},
  };
  for (const auto& [line, expected] : cases) {
    const QString script = Environment() +
                           "source <(viewctl completion bash)\nCOMP_LINE=$1 COMP_POINT=${#1}\n"
                           "COMP_WORDS=(viewctl \"${1##* }\") COMP_CWORD=1\n"
                           "[[ $1 == *'\"'* ]] && COMP_WORDS[1]=\\\"x\n_viewctl; printf '%s\\n' \"${COMPREPLY[@]}\"";
    const Outcome outcome = test::Run({"-c", script, "bash", QString::fromStdString(line)}, {}, {}, "bash");
    EXPECT_EQ(outcome.out, expected + "\n") << outcome.err;
  }
}

TEST_F(CompletionTest, OtherShellsInsertThemToo) {
  if (IsInstalled("fish")) {
    const QString script = "viewctl completion fish | source; complete -C 'viewctl show Station/For'";
    const Outcome fish = test::Run({"-c", Environment() + "exec fish -c \"$1\"", "sh", script}, {}, {}, "sh");
    EXPECT_EQ(fish.out, "Station/Forecourt\tview 102\n") << fish.err;
  }
  if (IsInstalled("zsh")) {
    const QTemporaryDir home;
    OnTerminal zsh({"-c", Environment() + "cd '" + home.path() + "'; PS1='ready> ' exec zsh -f -i"}, {}, {}, "sh");
    zsh.SaysUntil("ready> ");
    zsh.Type("autoload -U compinit && compinit -u && source <(viewctl completion zsh); echo lo''aded\n");
    EXPECT_TRUE(Has(zsh.SaysUntil("loaded"), "loaded"));
    zsh.Type("echo got \"$(viewctl show Bus\\ terminal/Bus\t)\"\n");
    zsh.Type("exit\n");
    const std::string said = zsh.Finish().out;
    EXPECT_TRUE(Has(said, "\"Bus hall\"  (view 120)")) << said;
  }
  EXPECT_EQ(test::Run({"completion", "csh"}).err, "viewctl: Name a shell: bash, zsh or fish\n");
}

}  // namespace
}  // namespace test
