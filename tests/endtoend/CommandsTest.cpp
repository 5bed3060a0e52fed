// SPDX-License-Identifier: Apache-2.0
// The commands for people, and how viewctl ends.

#include <algorithm>
#include <regex>

#include "../Cases.h"
#include "../platform/ScriptedSite.h"
#include "ViewctlRunner.h"
#include "host/JsonText.h"

namespace test {
namespace {

class CommandsTest : public SiteTest {};

TEST_F(CommandsTest, EachPrintsWhatTheUserMaySee) {
  for (const Row& row : RowsOf(TABLES "Commands.txt", TheSite())) {
    const Outcome outcome = Maria(Words(row.command));
    ExpectRow(outcome, row);
    EXPECT_FALSE(Has(outcome.out, "フェリー乗り場")) << "kenji's own view";
    EXPECT_EQ(outcome.err, "") << "nothing is edited";
  }
  ExpectSaid(Maria({"call", "GetPlanDetail", "-"}, R"({"ID":"9999"})"), 1, R"("ErrorInfo":"NYyjnxIZwFAorxuFXv")");
  EXPECT_EQ(Maria({"show", "110", "--json"}).out, Maria({"call", "GetPlanDetail", R"({"ID":"110"})"}).out);
}

TEST_F(CommandsTest, WatchHearsWhatComesToBeAndEndsQuietly) {
  const Site site;
  Running watch(site.As("kenji") + QStringList{"watch", "--all", "--view", "9999"}, "sample-kenji");
  EXPECT_EQ(watch.NextErrorLine(), "There is no view 9999 that you may see");
  ASSERT_EQ(watch.NextErrorLine(), "Watching; Ctrl-C ends it");
  ASSERT_EQ(RunAs(site, "maria", {"call", "AddPlanGroup", R"({"Name":"New","ParentID":"1","Type":0})"}).status, 0);
  EXPECT_EQ(watch.NextLine(), R"({"notice":{"id":"1","enum_state":3,"name":"","reserved":1,"child_id":"13",)"
                              R"("child_type":16001,"other_change_info":"0"}})");
  EXPECT_EQ(RunAs(site, "maria", {"call", "UpdatePlanGroup", R"({"Name":"Renamed","ID":"13"})"}).status, 0);
  EXPECT_TRUE(Has(watch.NextLine(), R"("id":"13","enum_state":2,"name":"Renamed")"))
      << "an announced group is watched too";
  EXPECT_EQ(watch.Terminate(), 0);
}

TEST_F(CommandsTest, AServerThatLoadsNothingIsGivenUpWithAReasonInTheTimeAsked) {
  const testing_support::ScriptedServer server([](const auto& request, auto& connection) {
    if (!request.target.ends_with("/V0/Sessions")) return connection.ReplyError(500, 100, 8);
    connection.ReplyData(testing_support::kAdminsSession);
  });
  const QStringList login = {"--server", QString::fromStdString(server.Url()), "--timeout", "4"};
  Running script(login + QStringList{"script"}, "any");
  script.Write("{\"load\":true}\n");
  ExpectMessage(
      test::Run(login + QStringList{"tree"}, "any"), 3,
      "viewctl: Waiting for the server: Internal error of the server: from below (given up after 4 seconds)\n");
  EXPECT_EQ(script.NextLine(), R"({"load":true,"result":false})");
  EXPECT_EQ(script.Finish(), 0);
  const auto requests = server.Requests();
  EXPECT_EQ(std::count_if(requests.begin(), requests.end(),
                          [](const auto& request) {
                            return request.method == "DELETE" && request.target.ends_with("/V0/Sessions/Current") &&
                                   request.headers.at("authorization") == "Bearer t";
                          }),
            2)
      << "each logs out, whatever came of it";
}

TEST_F(CommandsTest, AServerThatDoesNotListWhatItHasIsTold) {
  testing_support::ScriptedSite site;
  site.AnswerOnce("V0/Elements", testing_support::Replying(200, "{}"));
  ExpectMessage(test::Run({"--server", QString::fromStdString(site.Url()), "resources"}, "any"), 1,
                "viewctl: The server does not list its Elements\n");
}

TEST_F(CommandsTest, TheEmbeddedServerKeepsItsStoreBetweenRuns) {
  const QTemporaryDir folder;
  const QStringList own = {"--data", folder.filePath("store")};
  ExpectSaid(test::Run(own + QStringList{"call", "AddPlanGroup", R"({"Name":"Kept","ParentID":"-1","Type":0})"}), 0,
             "User admin, password ");
  std::string adds;
  for (int i = 0; i < 10; ++i) adds += "{\"call\":\"AddPlan\",\"request\":{\"Name\":\"Twin\",\"GroupID\":\"1\"}}\n";
  EXPECT_EQ(test::Run(own + QStringList{"script"}, {}, adds).status, 0);
  const Outcome second = test::Run(own + QStringList{"tree"});
  ExpectSaid(second, 0, "Kept/");
  ExpectSaid(second, 0, "    ├── Twin  (view 9)\n    └── Twin  (view 10)\n");  // by number
  EXPECT_TRUE(second.out.ends_with("\nShared views\n")) << "and nothing behind it: " << second.out;
  EXPECT_EQ(second.err, "");
}

TEST_F(CommandsTest, WhatIsNoUtf8IsShownAsReplacedAndKeepsNothingElseFromBeingShown) {
  testing_support::ScriptedSite site;
  const std::string spoilt = "\"Name\":\"\xffpoilt";
  site.SetNumbered(R"({"ID":1,"ParentViewGroupID":-1,"UserID":-1,)" + spoilt +
                       R"("},{"ID":2,"ParentViewGroupID":-1,"UserID":-1,"Name":"Whole"})",
                   R"({"ID":1,"ViewGroupID":-1,"UserID":-1,)" + spoilt +
                       R"( view"},{"ID":2,"ViewGroupID":-1,"UserID":-1,"Name":"Sound"})",
                   3);
  const QStringList login = {"--server", QString::fromStdString(site.Url())};
  // A request that the library reads is passed on as it is, and no fault is found with it.
  const std::string request = "{\"ID\":\"1\",\"Other\":\"\xff\"}";
  for (const Row& row : RowsOf(TABLES "Commands.txt", TheSite())) {
    const Outcome outcome = test::Run(login + Words(row.command), "any", request);
    ExpectRow(outcome, row);
    EXPECT_TRUE(host::IsUtf8(outcome.out)) << outcome;
    EXPECT_EQ(outcome.err, row.command.startsWith("export")
                               ? "Exported 2 views\nWarning: bytes that are no UTF-8 were exported as "
                                 "U+FFFD in view 1, group 1\n"
                               : "")
        << outcome;
  }
}

TEST_F(CommandsTest, ServePrintsItsAddressAndEndsWhenAsked) {
  const QTemporaryDir folder;
  const QString seed = folder.filePath("seed.json");
  WriteFile(seed, R"({"Users":[],"Areas":[],"Elements":[],"Views":[],"ViewGroups":[{"ID":4,"Name":"Sown",)"
                  R"("ParentViewGroupID":-1,"UserID":-1,"IsSharedView":-1}]})");
  // In brackets, as an IPv6 address stands, which not every machine has.
  Running serve({"serve", "--listen", "[127.0.0.1]:0", "--data", folder.path(), "--seed", seed}, "");
  const std::string user = serve.NextLine();
  std::smatch password;
  ASSERT_TRUE(std::regex_match(user, password, std::regex("User admin, password (.+) \\(shown this once\\)"))) << user;
  const std::string address = serve.NextLine();
  ASSERT_EQ(address.rfind("Listening on http://127.0.0.1:", 0), 0u) << address;
  ExpectSaid(test::Run({"--server", QString::fromStdString(address.substr(13)), "tree"}, password[1]), 0,
             "Sown/  (group 4)\n");
  ExpectMessage(test::Run({"tree", "--data", folder.path()}), 3,
                "views.db is being served by another program: give that one's address with --server");
  EXPECT_EQ(serve.Terminate(), 0);
}

TEST_F(CommandsTest, TheFirstPasswordIsToldAlsoWhenTheAddressIsTaken) {
  const QTemporaryDir folder;
  const QString taken = TheSite().Address().mid(7);
  ExpectSaid(test::Run({"serve", "--listen", taken, "--data", folder.path()}), 3, "User admin, password ");
  // No address in the brackets does not mean all of them.
  ExpectSaid(test::Run({"serve", "--listen", "[]:0", "--data", folder.path()}), 3, "cannot listen on []:0: ");
}

TEST_F(CommandsTest, ThePasswordMayStandInAFileAndTheLogGoesToOne) {
  const QString password = TheSite().File("password");
  WriteFile(password, "sample-maria\r\nnot this\n");
  const std::string form = "[0-9]+ [A-Za-z]+ \\[";
  for (const auto& [option, begin] : {std::pair("", form), std::pair("--log-time", "[-0-9T:.]{23}Z " + form)}) {
    const QString log = TheSite().File("log") + option;
    const Outcome outcome = test::Run(TheSite().As("maria") + QStringList{"--password-file", password, "--log-file"} +
                                      Words(log + " users " + option));
    ExpectSaid(outcome, 0, "");
    EXPECT_EQ(outcome.err, "");
    const std::string logged = ReadFile(log);
    EXPECT_TRUE(Has(logged, "[src/QorviViewPlugin/")) << "paths are relative to the repository";
    for (const std::string& line : Lines(logged)) {
      EXPECT_TRUE(std::regex_search(line, std::regex("^" + begin))) << line.substr(0, 200);
    }
  }
}

TEST_F(CommandsTest, TheDemoEndsWell) {
  const Outcome demo = test::Run({"demo"});
  EXPECT_EQ(demo.status, 0) << demo.err << demo.out;
  EXPECT_EQ(demo.err, "");
  std::smatch drawn;
  ASSERT_TRUE(std::regex_search(demo.out, drawn, std::regex("is drawn in (.+\\.svg)\n"))) << demo.out;
  const std::string picture = ReadFile(drawn[1]);
  EXPECT_TRUE(Has(picture, "<title>Platform 1 edge, magnified</title>")) << drawn[1];
  EXPECT_TRUE(Has(picture, "<g fill=\"#e9edf2\"")) << "its ground is light: " << drawn[1];
  std::remove(drawn[1].str().c_str());
  for (const auto& [begin, lines] : testing_support::Cases(TABLES "Demo.txt")) {
    std::string rest = begin + "\n";
    for (const std::string& line : lines) rest += line + "\n";
    const std::string said = std::regex_replace(demo.out, std::regex("is drawn in .+"), "is drawn in FILE");
    EXPECT_EQ(said.substr(std::min(said.find(begin), said.size())), rest);
  }
}

}  // namespace
}  // namespace test
