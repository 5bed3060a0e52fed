// SPDX-License-Identifier: Apache-2.0
// What every command has in common: its help, its options, the names it takes, what is said of mistakes.
#include <QDir>
#include <QTemporaryDir>

#include "../platform/TestCertificate.h"
#include "ViewctlRunner.h"

namespace test {
namespace {

class CommandLineTest : public SiteTest {
 protected:
  static Outcome Maria(const QStringList& command) { return RunAs(TheSite(), "maria", command); }
};

TEST_F(CommandLineTest, AMistakeIsToldWithWhatToDo) {
  const QString url = QString::fromStdString(TheSite().Url());
  const QString file = QString::fromStdString(TheSite().Folder()) + "/secret";
  WriteFile(file.toStdString(), "\n");
  const QString marked = file + "-marked";
  WriteFile(marked.toStdString(), "\xEF\xBB\xBFsample-maria\n");
  const QString exported = file + "-exported";
  WriteFile(exported.toStdString(), R"({"Format":"viewctl-export","Version":1,"Folders":[],"Views":[]})");
  const QStringList maria = TheSite().As("maria");
  const std::tuple<QStringList, int, std::string> cases[] = {
      {{"shwo", "110"}, 2, "There is no command shwo; did you mean show?"},
      {{"shwo", "--help"}, 2, "There is no command shwo; did you mean show?"},
      {{"man", "shwo"}, 2, "There is no command shwo; did you mean show?"},
      {{"help", "__complete"}, 2, "There is no command __complete"},
      {{"help", "shwo"}, 2, "There is no command shwo; did you mean show?"},
      {{"show", "--jsno", "110"}, 2, "viewctl show has no option --jsno; did you mean --json?"},
      {{"--sever=x", "show", "110"}, 2, "viewctl show has no option --sever; did you mean --server?"},
      {{"--json", "tree"}, 2, "--json stands behind viewctl tree"},
      {{"users", "maria"}, 2, "viewctl users takes no further argument \"maria\""},
      {{"show"},
       2,
       "viewctl: VIEW is missing: ids, or paths: Station/Forecourt (viewctl show --help says what it takes)"},
      {{"export"}, 2, "viewctl: -o is missing: the file; \"-\" is stdout"},
      {{"tree", "--depth"}, 2, "viewctl: --depth has no value: how many levels below the top are shown"},
      {{"tree", "--depth", "x"}, 2, "viewctl: --depth: \"x\" is no whole number from 0 to 1000000"},
      {{"tree", "--timeout=0"}, 2, "viewctl: --timeout: \"0\" is no whole number from 1 to 86400 (viewctl tree --help"},
      {{"--timeout", "86401"}, 2, "from 1 to 86400 (viewctl --help lists what there is)"},
      {{"draw", "1", "--page", "1st"}, 2, "viewctl: --page: \"1st\" is no whole number of 32 bits"},
      {{"default", "--type", "99999999999"}, 2, "viewctl: --type: \"99999999999\" is no whole number of 32 bits"},
      {{"tree", "-o", "yaml"}, 2, "viewctl: -o: \"yaml\" is none of wide, json"},
      {{"tree", "--json=yes please"}, 2, "viewctl: --json takes no value: as JSON"},
      {{"tree", "--depth", "1", "--depth", "2"}, 2, "viewctl: --depth is said more than once: leave all but one out"},
      {{"mv", "110"}, 2, "viewctl: SOURCE...DESTINATION takes at least 2: what to take, by id or path"},
      {{"--server", "", "tree"}, 2, "--server: the value is empty (is a variable not set?)"},
      {{"--server=", "tree"}, 2, "--server: the value is empty"},
      {{"tree", "--user", ""}, 2, "--user: the value is empty"},
      {{"import", file, "--into", ""}, 2, "--into: the value is empty"},
      {maria + QStringList{"show", ""}, 2, "is empty: is a variable not set?"},
      {maria + QStringList{"tree", "--data", "x"}, 2, "--data names the own server's store and --server another"},
      {{"tree", "--password-file", file}, 2, "--password-file: the own server wants no password"},
      {{"tree", "--ca-file", file}, 2, "--ca-file: the own server has no certificate"},
      {maria + QStringList{"tree", "--ca-file", file}, 2, "--ca-file: a server at http:// shows no certificate"},
      {{"serve", "--user", "maria"}, 2, "--user: nobody logs in for this command"},
      {maria + QStringList{"tree", "--password-file", file}, 2, "is empty: its first line is the password"},
      {maria + QStringList{"tree", "--password-file", marked}, 2, "begins with a byte-order mark"},
      {maria + QStringList{"show", "1"}, 1, "1 is a folder; viewctl tree 1 shows it"},
      {maria + QStringList{"draw", "Station"}, 1, "Station is a folder; viewctl tree 1 shows it"},
      {maria + QStringList{"import", exported, "--into", "110"}, 1, "110 is a view; viewctl show 110 shows it"},
      {maria + QStringList{"export", "-o", "-", "Station/Nowhere"}, 2,
       "There is no view or group \"Station/Nowhere\": it"},
      {maria + QStringList{"show", "Staton/forcourt"}, 2,
       "did you mean \"Station/Forecourt\"? (viewctl tree lists them)"},
      {maria + QStringList{"mv", "110", "Bus termnal/"}, 2,
       "no folder public/Bus termnal; did you mean public/Bus terminal?"},
      {maria + QStringList{"export", "--json", "-o", "-"}, 2, "--json and -o - both write to stdout: name a file"},
      {maria + QStringList{"resources", "--kind", "camra"}, 2, "\"camra\" is no kind of resource: say one of camera"},
      {maria + QStringList{"call", "AddPlann", "{}"}, 2, "There is no exchange AddPlann; did you mean AddPlan?"},
  };
  for (const auto& [arguments, status, part] : cases) {
    const Outcome outcome = test::Run(arguments, arguments.contains(url) ? "sample-maria" : "");
    const std::string line = arguments.join(' ').toStdString();
    EXPECT_EQ(outcome.status, status) << line << "\n" << outcome.err;
    EXPECT_TRUE(Has(outcome.err, part)) << line << "\n" << outcome.err;
    EXPECT_EQ(outcome.out, "") << line;
  }
}

TEST_F(CommandLineTest, WhatCannotBeReachedIsToldWithWhatToDo) {
  const std::pair<QString, const char*> cases[] = {
      {"http://127.0.0.1:1", "The server could not be reached; check the host and port in --server"},
      {"gopher://127.0.0.1:1", "begins with http:// or https://"},
      {QString::fromStdString(TheSite().Url()).replace("http:", "https:"), "does it speak https? try http://"},
      {QString::fromStdString(TheSite().Url()), "Wrong user name or password; check --user, and the password in"},
  };
  for (const auto& [server, part] : cases) {
    const Outcome outcome = test::Run({"--server", server, "tree"}, "wrong");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_TRUE(Has(outcome.err, part)) << outcome.err;
    EXPECT_EQ(Lines(outcome.err).size(), 1u) << outcome.err;
  }
}

TEST_F(CommandLineTest, ACertificateIsToldByWhatIsWrongWithIt) {
  const QTemporaryDir folder;
  const std::string right = folder.filePath("right.pem").toStdString();
  const std::string wrongName = folder.filePath("wrong.pem").toStdString();
  testing_support::MakeCertificate(right, {});
  testing_support::MakeCertificate(wrongName, {"IP:127.0.0.2"});
  const std::tuple<std::string, std::string, const char*> cases[] = {
      {right, "", "from an authority that is not known here; give its certificate with --ca-file FILE"},
      {right, wrongName, "does not come from the authorities in "},
      {wrongName, wrongName, "is for another name than the one in --server"},
  };
  for (const auto& [presented, authority, part] : cases) {
    server::ViewServerOptions options;
    options.dataFile = ":memory:";
    options.tlsCertFile = options.tlsKeyFile = presented;
    server::ViewServer server(options);
    server.Start();
    QStringList command = {"tree", "--server", QString::fromStdString(server.Url())};
    if (!authority.empty()) command << "--ca-file" << QString::fromStdString(authority);
    const Outcome outcome = test::Run(command, "any");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_TRUE(Has(outcome.err, part)) << outcome.err;
  }
}

TEST_F(CommandLineTest, HelpIsToldInEveryWordThatPeopleTry) {
  const Outcome all = test::Run({"help"});
  EXPECT_EQ(all.out, test::Run({"--help"}).out);
  EXPECT_TRUE(Has(all.out, "\n  export ")) << all.out;
  const Outcome show = test::Run({"help", "show"});
  EXPECT_EQ(show.status, 0);
  EXPECT_EQ(show.out, test::Run({"show", "--help"}).out);
  EXPECT_TRUE(Has(show.out, "Usage: viewctl show [OPTIONS] ")) << show.out;
  EXPECT_TRUE(Has(show.out, "Options of every command")) << show.out;
  EXPECT_TRUE(Has(show.out, "--password-file")) << show.out;
}

TEST_F(CommandLineTest, ManualPagesSayWhatTheHelpSays) {
  const QTemporaryDir folder;
  EXPECT_EQ(test::Run({"man", "--into-folder", folder.path()}).status, 0);
  const std::string all = test::Run({"help"}).out;
  EXPECT_FALSE(Has(all, "__complete"));
  for (const char* name : {"show", "replace", "import", "completion"}) {
    const std::string page = ReadFile(folder.filePath("viewctl-" + QString(name) + ".1").toStdString());
    EXPECT_TRUE(page.starts_with(".TH VIEWCTL\\-")) << page;
    EXPECT_EQ(page, test::Run({"man", name}).out);
    EXPECT_TRUE(Has(page, "\\fB\\-\\-server\\fR \\fIURL\\fR\n")) << page;
  }
  const std::string page = test::Run({"man", "replace"}).out;
  EXPECT_TRUE(Has(page, "\\fB\\-\\-undo\\fR \\fIFILE\\fR\na new file, with which viewctl undo takes it back\n"))
      << page;
  EXPECT_TRUE(Has(ReadFile(folder.filePath("viewctl.1").toStdString()), ".TP\n\\fBreplace\\fR\nanother resource"));
  // Where there is no mandoc, nobody asks it. A page has no date, so that the same program makes the same bytes.
  const QString lint = "! command -v mandoc >/dev/null || mandoc -T lint -W warning '" + folder.path() +
                       "'/*.1 | grep -v 'missing date,'";
  EXPECT_EQ(test::Run({"-c", lint}, {}, {}, "sh").out, "");
}

TEST_F(CommandLineTest, TheHelpSaysTrulyWhereThePluginIsLookedFor) {
  const std::string help = test::Run({"--help"}).out;
  EXPECT_TRUE(Has(help, "looked for in ../lib")) << help;
  // Beside a program that stands elsewhere there is none, and the same folders are named.
  const QTemporaryDir folder;
  ASSERT_TRUE(QDir(folder.path()).mkpath("bin"));
  ASSERT_TRUE(QFile::copy(VIEWCTL_FILE, folder.filePath("bin/viewctl")));
  const Outcome alone = test::Run({"tree"}, {}, {}, folder.filePath("bin/viewctl"));
  EXPECT_EQ(alone.status, 2);
  EXPECT_TRUE(Has(alone.err, "QorviViewPlugin was not found in ../lib")) << alone.err;
  // Nor is there a viewdraw, without which the tour ends well.
  const QString plugin = QFileInfo(QString(VIEWCTL_FILE)).dir().filePath("../lib/libQorviViewPlugin.so");
  const Outcome demo = test::Run({"demo", "--plugin", plugin}, {}, {}, folder.filePath("bin/viewctl"));
  EXPECT_EQ(demo.status, 0) << demo.err;
  EXPECT_TRUE(Has(demo.out, "which is not here. In letters \"Platform 1 edge, magnified\" is:\n\nPlatform 1 edge"));
  EXPECT_TRUE(Has(demo.out, "┘\n\nThat was the tour; the server and its folder go away with it.\n")) << demo.out;
}

TEST_F(CommandLineTest, EveryCommandTakesPathsToo) {
  const QString path = "Station/Platforms/Platforms 1–2/Platform 1 edge, magnified";
  EXPECT_EQ(Maria({"show", path}).out, Maria({"show", "110"}).out);
  EXPECT_EQ(Maria({"draw", "view:110"}).out, Maria({"draw", path}).out);
  EXPECT_EQ(Maria({"export", "-o", "-", "Station/Platforms"}).out, Maria({"export", "-o", "-", "group:2"}).out);
  EXPECT_NE(Maria({"export", "-o", "-", "private"}).out, Maria({"export", "-o", "-"}).out);
}

TEST_F(CommandLineTest, ATreeIsShownInPart) {
  const std::string platforms = Maria({"tree", "Station/Platforms"}).out;
  EXPECT_EQ(Lines(platforms).front(), "Platforms/  (group 2)");
  EXPECT_EQ(Lines(Maria({"tree", "group:2", "--depth", "1"}).out).size(), 5u) << "two folders and two views below it";
  EXPECT_EQ(Maria({"tree", "group:1", "--name", "*edge*"}).out,
            "Station/  (group 1)\n"
            "└── Platforms/  (group 2)\n"
            "    └── Platforms 1–2/  (group 3)\n"
            "        └── Platform 1 edge, magnified  (view 110)\n");
  EXPECT_EQ(Lines(Maria({"tree", "group:1", "--counts"}).out).front(), "Station/  (group 1)  4 folders, 18 views");
  EXPECT_TRUE(Has(Maria({"tree", "group:3", "--json"}).out, R"([{"ID":"3","Name":"Platforms 1–2")"));
  EXPECT_EQ(Maria({"tree", "--depth", "-1"}).status, 2);
  EXPECT_EQ(Maria({"tree", "110"}).err, "viewctl: 110 is a view; viewctl show 110 shows it\n");
}

TEST_F(CommandLineTest, SeveralViewsAreShownOrNone) {
  EXPECT_EQ(Maria({"show", "110", "102"}).out, Maria({"show", "110"}).out + "\n" + Maria({"show", "102"}).out);
  const Outcome none = Maria({"show", "110", "9999"});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.out, "");
}

TEST_F(CommandLineTest, WatchSaysWhatIsNotThere) {
  Running watch(TheSite().As("maria") + QStringList{"watch", "--view", "9999", "--group", "Station"}, "sample-maria");
  EXPECT_EQ(watch.NextErrorLine(), "There is no view 9999 that you may see");
  EXPECT_EQ(watch.NextErrorLine(), "Watching; Ctrl-C ends it");
  EXPECT_EQ(watch.Terminate(), 0);
}

TEST_F(CommandLineTest, AStoreThatIsBeingServedIsToldApart) {
  const QTemporaryDir folder;
  Running serve({"serve", "--listen", "127.0.0.1:0", "--data", folder.path()}, "");
  ASSERT_TRUE(Has(serve.NextLine(), "User admin"));
  ASSERT_TRUE(Has(serve.NextLine(), "Listening on "));
  const Outcome tree = test::Run({"tree", "--data", folder.path()});
  EXPECT_EQ(tree.status, 3);
  EXPECT_TRUE(Has(tree.err, "views.db is being served by another program: give that one's address with --server"))
      << tree.err;
  EXPECT_EQ(serve.Terminate(), 0);
}

TEST_F(CommandLineTest, LogLinesHaveTheirTimeWhereItIsAskedFor) {
  const QTemporaryDir folder;
  const QString log = folder.filePath("log");
  EXPECT_EQ(Maria({"users", "--log-file", log, "--log-time"}).status, 0);
  const auto lines = Lines(ReadFile(log.toStdString()));
  ASSERT_FALSE(lines.empty());
  for (const std::string& line : lines) EXPECT_EQ(line.substr(23, 2), "Z ") << line;
}

TEST_F(CommandLineTest, AnEditSaysWhereItIsMade) {
  const Outcome edit = Maria({"call", "UpdatePlanGroup", R"({"ID":"9","Name":"My rounds"})"});
  EXPECT_EQ(edit.err, "Editing " + TheSite().Url() + " as maria\n");
  EXPECT_EQ(Maria({"call", "GetPlanGroups", "{}"}).err, "");
}

TEST_F(CommandLineTest, ARequestWithFaultsIsNotSentUnlessRaw) {
  const QString typo = R"({"Nmae":"Typo","ParentID":"-1","Type":0,"Colour":1})";
  const Outcome refused = Maria({"call", "AddPlanGroup", typo});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.err,
            "viewctl: AddPlanGroup: there is no key \"Nmae\"; did you mean \"Name\"?\n"
            "viewctl: AddPlanGroup: there is no key \"Colour\" (nothing was sent; --raw sends it as it stands)\n");
  EXPECT_EQ(Maria({"call", "AddPlanGroup", typo, "--raw"}).status, 1) << "the server wants a name";
  EXPECT_EQ(Maria({"call", "UpdatePlan", R"({"ID":"130","Name":"x","GroupID":"-1"})"}).status, 2);
}

}  // namespace
}  // namespace test
