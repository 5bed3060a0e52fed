// SPDX-License-Identifier: Apache-2.0
// What every command has in common: its help, its options, the names it takes, what is said of mistakes.
#include <QDir>
#include <QTemporaryDir>

#include "../platform/TestCertificate.h"
#include "ViewctlRunner.h"

namespace test {
namespace {

class CommandLineTest : public SiteTest {};

// Those that docs/viewctl.md lists are held by ViewctlDocTest.
TEST_F(CommandLineTest, AMistakeIsToldInOneLineWithWhatToDo) {
  WriteFile(TheSite().File("empty"), "\n");
  WriteFile(TheSite().File("marked"), "\xEF\xBB\xBFsample-maria\n");
  WriteFile(TheSite().File("exported"), R"({"Format":"viewctl-export","Version":1,"Folders":[],"Views":[]})");
  for (const auto& [status, command, parts] : RowsOf(TABLES "CommandLine.txt", TheSite())) {
    const Outcome outcome = test::Run(Words(command), command.startsWith("--server ") ? "sample-maria" : "");
    ExpectMessage(outcome, status, parts.at(0));
    EXPECT_EQ(Lines(outcome.err).size(), 1u) << outcome;
  }
}

TEST_F(CommandLineTest, ACertificateIsToldByWhatIsWrongWithIt) {
  const QString right = TheSite().File("right.pem"), wrongName = TheSite().File("wrong.pem");
  testing_support::MakeCertificate(right.toStdString(), {});
  testing_support::MakeCertificate(wrongName.toStdString(), {"IP:127.0.0.2"});
  const std::tuple<QString, QString, const char*> cases[] = {
      {right, "", "from an authority that is not known here; give its certificate with --ca-file FILE"},
      {right, wrongName, "does not come from the authorities in "},
      {wrongName, wrongName, "is for another name than the one in --server"},
  };
  for (const auto& [presented, authority, part] : cases) {
    server::ViewServerOptions options;
    options.dataFile = ":memory:";
    options.tlsCertFile = options.tlsKeyFile = presented.toStdString();
    server::ViewServer server(options);
    server.Start();
    QStringList command = {"tree", "--server", QString::fromStdString(server.Url())};
    if (!authority.isEmpty()) command << "--ca-file" << authority;
    ExpectMessage(test::Run(command, "any"), 3, part);
  }
}

TEST_F(CommandLineTest, HelpIsToldInEveryWordThatPeopleTry) {
  const Outcome all = test::Run({"help"});
  EXPECT_EQ(all.out, test::Run({"--help"}).out);
  EXPECT_TRUE(Has(all.out, "\n  export ")) << all.out;
  const Outcome show = test::Run({"help", "show"});
  EXPECT_EQ(show.out, test::Run({"show", "--help"}).out);
  for (const char* part : {"Usage: viewctl show [OPTIONS] ", "Options of every command", "--password-file"}) {
    ExpectSaid(show, 0, part);
  }
}

TEST_F(CommandLineTest, ManualPagesSayWhatTheHelpSays) {
  const QTemporaryDir folder;
  EXPECT_EQ(test::Run({"man", "--into-folder", folder.path()}).status, 0);
  const std::string all = test::Run({"help"}).out;
  EXPECT_FALSE(Has(all, "__complete"));
  for (const char* name : {"show", "replace", "import", "completion"}) {
    const std::string page = ReadFile(folder.filePath("viewctl-" + QString(name) + ".1"));
    EXPECT_TRUE(page.starts_with(".TH VIEWCTL\\-")) << page;
    EXPECT_EQ(page, test::Run({"man", name}).out);
    EXPECT_TRUE(Has(page, "\\fB\\-\\-server\\fR \\fIURL\\fR\n")) << page;
  }
  for (const Row& row : RowsOf(TABLES "CommandLine.txt", TheSite())) ExpectRow(test::Run(Words(row.command)), row);
  EXPECT_TRUE(Has(ReadFile(folder.filePath("viewctl.1")), ".TP\n\\fBreplace\\fR\nanother resource"));
  // Where there is no mandoc, nobody asks it. A page has no date, so that the same program makes the same bytes.
  const QString lint = "! command -v mandoc >/dev/null || mandoc -T lint -W warning '" + folder.path() +
                       "'/*.1 | grep -v 'missing date,'";
  EXPECT_EQ(RunShell(lint).out, "");
}

TEST_F(CommandLineTest, TheHelpSaysTrulyWhereThePluginIsLookedFor) {
  ExpectSaid(test::Run({"--help"}), 0, "looked for in ../lib");
  // Beside a program that stands elsewhere there is none, and the same folders are named.
  const QTemporaryDir folder;
  ASSERT_TRUE(QDir(folder.path()).mkpath("bin"));
  const QString copy = folder.filePath("bin/viewctl");
  ASSERT_TRUE(QFile::copy(VIEWCTL_FILE, copy));
  const Outcome none = test::Run({"tree"}, {}, {}, copy);
  ExpectMessage(none, 2, "QorviViewPlugin was not found in ../lib");
  ExpectMessage(none, 2, "../lib/qorvi and ./, as seen from viewctl; name it with --plugin FILE\n");
  // Nor is there a viewdraw, without which the tour ends well.
  const Outcome demo = test::Run({"demo", "--plugin", PLUGIN_FILE}, {}, {}, copy);
  ExpectSaid(demo, 0, "which is not here. In letters \"Platform 1 edge, magnified\" is:\n\nPlatform 1 edge");
  ExpectSaid(demo, 0, "┘\n\nThat was the tour; the server and its folder go away with it.\n");
}

TEST_F(CommandLineTest, EveryCommandTakesPathsToo) {
  const QString path = "Station/Platforms/Platforms 1–2/Platform 1 edge, magnified";
  EXPECT_EQ(Maria({"show", path}).out, Maria({"show", "110"}).out);
  EXPECT_EQ(Maria({"draw", "view:110"}).out, Maria({"draw", path}).out);
  EXPECT_EQ(Maria({"export", "-o", "-", "Station/Platforms"}).out, Maria({"export", "-o", "-", "group:2"}).out);
  const std::string own = Maria({"export", "-o", "-", "private"}).out;
  EXPECT_TRUE(Has(own, "\"Kind\": \"private\"") && !Has(own, "\"Kind\": \"public\"")) << own;
  EXPECT_TRUE(own.ends_with("\n  }\n ]\n}\n")) << "and nothing behind it: " << own;
  // Several views are shown, or none.
  EXPECT_EQ(Maria({"show", "110", "102"}).out, Maria({"show", path}).out + "\n" + Maria({"show", "102"}).out);
  ExpectMessage(Maria({"show", "110", "9999"}), 1, "There is no view 9999");
}

TEST_F(CommandLineTest, ATreeIsShownInPart) {
  EXPECT_EQ(Lines(Maria({"tree", "Station/Platforms"}).out).front(), "Platforms/  (group 2)");
  EXPECT_EQ(Lines(Maria({"tree", "group:1", "--depth", "1"}).out).size(), 9u) << "two folders and six views below it";
  EXPECT_EQ(Maria({"tree", "group:1", "--name", "*edge*"}).out,
            "Station/  (group 1)\n"
            "└── Platforms/  (group 2)\n"
            "    └── Platforms 1–2/  (group 3)\n"
            "        └── Platform 1 edge, magnified  (view 110)\n");
  EXPECT_EQ(Lines(Maria({"tree", "group:1", "--counts"}).out).front(), "Station/  (group 1)  4 folders, 18 views");
  ExpectSaid(Maria({"tree", "group:3", "--json"}), 0, R"([{"ID":"3","Name":"Platforms 1–2")");
  EXPECT_EQ(Maria({"tree", "--depth", "-1"}).status, 2);
  EXPECT_EQ(Maria({"tree", "--depth", "1000000"}).status, 0) << "the most that may be said";
}

TEST_F(CommandLineTest, ARequestWithFaultsIsNotSentUnlessRaw) {
  const QString typo = R"({"Nmae":"Typo","ParentID":"-1","Type":0,"Colour":1})";
  ExpectMessage(Maria({"call", "AddPlanGroup", typo}), 2,
                "viewctl: AddPlanGroup: there is no key \"Nmae\"; did you mean \"Name\"?\n"
                "viewctl: AddPlanGroup: there is no key \"Colour\" (nothing was sent; --raw sends it as it stands)\n");
  EXPECT_EQ(Maria({"call", "AddPlanGroup", typo, "--raw"}).status, 1) << "the server wants a name";
  EXPECT_EQ(Maria({"call", "UpdatePlan", R"({"ID":"130","Name":"x","GroupID":"-1"})"}).status, 2);
}

}  // namespace
}  // namespace test
