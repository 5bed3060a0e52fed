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

class CommandsTest : public SiteTest {
 protected:
  static Outcome Maria(const QStringList& command, const std::string& input = {}) {
    return RunAs(TheSite(), "maria", command, input);
  }
};

TEST_F(CommandsTest, EachPrintsWhatTheUserMaySee) {
  const std::pair<QStringList, std::vector<const char*>> cases[] = {
      {{"tree"},
       {"Public views\n├── ", "/  (group 12)", "Night shift, doors  (view 133)",
        "夜間巡回  (view 137, shared with you)", "To be filled  (view 130)"}},
      {{"show", "110"},
       {"\"Platform 1 edge, magnified\"  (view 110)", "lies in    Public views / Station / Platforms / Platforms 1–2",
        "\n  0. camera \"Platform 1, edge 1\", id 2031\n", "zoom window 1 600,150 to 850,400 thousandths"}},
      {{"users"}, {"\n2       yes      1    maria\n"}},
      {{"call", "GetPlanConfig"}, {R"({"LoadAll":true,)"}},
  };
  for (const auto& [command, parts] : cases) {
    const Outcome outcome = Maria(command);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    for (const char* part : parts) EXPECT_TRUE(Has(outcome.out, part)) << part << " is not in\n" << outcome.out;
    EXPECT_FALSE(Has(outcome.out, "フェリー乗り場")) << "kenji's own view";
  }
  const Outcome unknown = Maria({"call", "GetPlanDetail", "-"}, R"({"ID":"9999"})");
  EXPECT_EQ(unknown.status, 1);
  EXPECT_TRUE(Has(unknown.out, R"("ErrorInfo":"NYyjnxIZwFAorxuFXv")")) << unknown.out;
  const Outcome detail = Maria({"show", "110", "--json"});
  EXPECT_EQ(detail.out, Maria({"call", "GetPlanDetail", R"({"ID":"110"})"}).out);
}

TEST_F(CommandsTest, WatchHearsWhatComesToBeAndEndsQuietly) {
  Running watch(TheSite().As("kenji") + QStringList{"watch", "--all"}, "sample-kenji");
  ASSERT_EQ(watch.NextErrorLine(), "Watching; Ctrl-C ends it");
  const Outcome group = Maria({"call", "AddPlanGroup", R"({"Name":"New","ParentID":"1","Type":0})"});
  rapidjson::Document answer;
  host::ParseJson(group.out, answer);
  const std::string id = host::TextOf(answer, "ID");
  EXPECT_EQ(watch.NextLine(), R"({"notice":{"id":"1","enum_state":3,"name":"","reserved":1,"child_id":")" + id +
                                  R"(","child_type":16001,"other_change_info":"0"}})");
  EXPECT_EQ(
      Maria({"call", "UpdatePlanGroup", R"({"Name":"Renamed","ID":")" + QString::fromStdString(id) + "\"}"}).status, 0);
  EXPECT_TRUE(Has(watch.NextLine(), "\"id\":\"" + id + R"(","enum_state":2,"name":"Renamed")"))
      << "an announced group is watched too";
  EXPECT_EQ(watch.Terminate(), 0);
  EXPECT_EQ(Maria({"call", "DeletePlanGroup", R"({"ID":")" + QString::fromStdString(id) + "\"}"}).status, 0);
}

TEST_F(CommandsTest, EachFailureIsOneLineAndItsOwnStatus) {
  const QStringList maria = TheSite().As("maria");
  const QString url = QString::fromStdString(TheSite().Url());
  const QString file = QString::fromStdString(TheSite().Folder()) + "/none";
  const std::tuple<QStringList, std::string, int> cases[] = {
      {{}, "", 2},
      {{"nonsense"}, "", 2},
      {{"tree", "--nonsense"}, "", 2},
      {{"tree", "--server", url}, "", 2},
      {maria + QStringList{"tree", "--password-file", file}, "", 2},
      {maria + QStringList{"tree", "--plugin", file}, "sample-maria", 2},
      {maria + QStringList{"tree", "--log-file", file + "/log"}, "sample-maria", 2},
      {maria + QStringList{"show", "gate"}, "sample-maria", 2},
      {maria + QStringList{"call", "InitEnvir"}, "sample-maria", 2},
      {{"call", "Nonsense", "--server", "http://127.0.0.1:1"}, "x", 2},
      {maria + QStringList{"script", file}, "sample-maria", 2},
      {maria + QStringList{"watch"}, "sample-maria", 2},
      {maria + QStringList{"tree", "--timeout", "0"}, "sample-maria", 2},
      {maria + QStringList{"import", file}, "sample-maria", 2},
      {maria + QStringList{"export", "-o", file + "/out"}, "sample-maria", 2},
      {maria + QStringList{"show", "9999"}, "sample-maria", 1},
      {maria + QStringList{"export", "view:1", "-o", file}, "sample-maria", 1},
      {maria + QStringList{"tree"}, "wrong", 3},
      {{"tree", "--server", "http://127.0.0.1:1"}, "x", 3},
      {{"script", "--server", "http://127.0.0.1:1"}, "x", 3},
      {{"tree", "--data", QString::fromStdString(TheSite().Folder()), "--user", "nobody"}, "", 3},
  };
  for (const auto& [arguments, password, status] : cases) {
    const Outcome outcome = test::Run(arguments, password);
    const std::string line = arguments.join(' ').toStdString();
    EXPECT_EQ(outcome.status, status) << line << "\n" << outcome.err;
    EXPECT_EQ(outcome.out, "") << line;
    EXPECT_EQ(Lines(outcome.err).size(), 1u) << line << "\n" << outcome.err;
  }
}

TEST_F(CommandsTest, TheVersionIsToldWithoutAServer) {
  const Outcome version = test::Run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out.rfind("viewctl ", 0), 0u) << version.out;
}

TEST_F(CommandsTest, AServerThatLoadsNothingIsGivenUpWithAReasonInTheTimeAsked) {
  const testing_support::ScriptedServer server([](const auto& request, auto& connection) {
    if (!request.target.ends_with("/V0/Sessions")) return connection.ReplyError(500, 100, 8);
    connection.ReplyData(R"({"Session":{"Token":"t","UserID":1,"UserName":"admin"}})");
  });
  const QStringList login = {"--server", QString::fromStdString(server.Url()), "--timeout", "4"};
  Running script(login + QStringList{"script"}, "any");
  script.Write("{\"load\":true}\n");
  const Outcome tree = test::Run(login + QStringList{"tree"}, "any");
  EXPECT_EQ(tree.status, 3);
  EXPECT_EQ(tree.err,
            "viewctl: Waiting for the server: Internal error of the server: from below "
            "(given up after 4 seconds)\n");
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
  const testing_support::ScriptedServer server([](const auto& request, auto& connection) {
    if (Has(request.target, "/V0/Elements")) return connection.Reply(200, "{}");
    connection.ReplyData(R"({"Session":{"Token":"t","UserID":1,"UserName":"admin"}})");
  });
  const Outcome outcome = test::Run({"--server", QString::fromStdString(server.Url()), "resources"}, "any");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "viewctl: The server does not list its Elements\n");
}

TEST_F(CommandsTest, TheEmbeddedServerKeepsItsStoreBetweenRuns) {
  const QTemporaryDir folder;
  const QStringList own = {"--data", folder.filePath("store")};
  const Outcome first =
      test::Run(own + QStringList{"call", "AddPlanGroup", R"({"Name":"Kept","ParentID":"-1","Type":0})"});
  EXPECT_EQ(first.status, 0) << first.err;
  EXPECT_TRUE(Has(first.err, "User admin, password ")) << first.err;
  std::string adds;
  for (int i = 0; i < 10; ++i) adds += "{\"call\":\"AddPlan\",\"request\":{\"Name\":\"Twin\",\"GroupID\":\"1\"}}\n";
  EXPECT_EQ(test::Run(own + QStringList{"script"}, {}, adds).status, 0);
  const Outcome second = test::Run(own + QStringList{"tree"});
  EXPECT_TRUE(Has(second.out, "Kept/")) << second.out;
  EXPECT_TRUE(Has(second.out, "    ├── Twin  (view 9)\n    └── Twin  (view 10)\n")) << "by number: " << second.out;
  EXPECT_TRUE(second.out.ends_with("\nShared views\n")) << "and nothing behind it: " << second.out;
  EXPECT_EQ(second.err, "");
}

TEST_F(CommandsTest, WhatIsNoUtf8IsShownAsReplacedAndKeepsNothingElseFromBeingShown) {
  testing_support::ScriptedSite site;
  const std::string spoilt = "\"Name\":\"\xffpoilt";
  site.SetNumbered(R"({"ID":1,"ParentViewGroupID":-1,"UserID":-1,)" + spoilt + "\"}",
                   R"({"ID":1,"ViewGroupID":-1,"UserID":-1,)" + spoilt +
                       R"( view"},{"ID":2,"ViewGroupID":-1,"UserID":-1,"Name":"Sound"})",
                   3);
  const QStringList login = {"--server", QString::fromStdString(site.Url())};
  const std::string replaced = "\xEF\xBF\xBDpoilt";
  // A request that the library reads is passed on as it is, and no fault is found with it.
  const std::string request = "{\"ID\":\"1\",\"Other\":\"\xff\"}";
  const std::pair<QStringList, std::vector<std::string>> commands[] = {
      {{"tree"}, {replaced + "/  (group 1)", replaced + " view  (view 1)", "Sound  (view 2)"}},
      {{"tree", "--json"}, {R"({"ID":"1","Name":")" + replaced + '"', R"("Name":"Sound")"}},
      {{"show", "1"}, {'"' + replaced + " view\"  (view 1)"}},
      {{"show", "1", "--json"}, {R"("Name":")" + replaced + " view\""}},
      {{"call", "--raw", "GetPlanDetail", "-"}, {R"("Name":")" + replaced + " view\""}},
      {{"export", "-o", "-"}, {'"' + replaced + " view\"", '"' + replaced + '"', "\"Sound\""}},
  };
  for (const auto& [command, parts] : commands) {
    site.AnswerOnce("V0/Sessions", [](const auto&, auto& connection) {
      connection.ReplyData(R"({"Session":{"Token":"t","UserID":1,"UserName":"admin"}})");
    });
    const Outcome outcome = test::Run(login + command, "any", request);
    const std::string line = command.join(' ').toStdString();
    EXPECT_EQ(outcome.status, 0) << line << outcome.err;
    for (const std::string& part : parts) EXPECT_TRUE(Has(outcome.out, part)) << line << "\n" << outcome.out;
    EXPECT_TRUE(host::IsUtf8(outcome.out)) << line;
    EXPECT_EQ(outcome.err, command[0] == "export"
                               ? "Exported 2 views\nWarning: bytes that are no UTF-8 were exported as "
                                 "U+FFFD in view 1, group 1\n"
                               : "")
        << line;
  }
}

TEST_F(CommandsTest, ServePrintsItsAddressAndEndsWhenAsked) {
  const QTemporaryDir folder;
  Running serve({"serve", "--listen", "127.0.0.1:0", "--data", folder.path()}, "");
  const std::string user = serve.NextLine();
  std::smatch password;
  ASSERT_TRUE(std::regex_match(user, password, std::regex("User admin, password (.+) \\(shown this once\\)"))) << user;
  const std::string address = serve.NextLine();
  ASSERT_EQ(address.rfind("Listening on http://127.0.0.1:", 0), 0u) << address;
  const Outcome tree = test::Run({"--server", QString::fromStdString(address.substr(13)), "tree"}, password[1]);
  EXPECT_EQ(tree.status, 0) << tree.err;
  EXPECT_EQ(serve.Terminate(), 0);
}

TEST_F(CommandsTest, TheFirstPasswordIsToldAlsoWhenTheAddressIsTaken) {
  const QTemporaryDir folder;
  const QString taken = QString::fromStdString(TheSite().Url().substr(7));
  const Outcome serve = test::Run({"serve", "--listen", taken, "--data", folder.path()});
  EXPECT_EQ(serve.status, 3) << serve.err;
  EXPECT_TRUE(Has(serve.out, "User admin, password ")) << serve.out;
}

TEST_F(CommandsTest, ThePasswordMayStandInAFileAndTheLogGoesToOne) {
  const std::string password = TheSite().Folder() + "/password";
  const std::string log = TheSite().Folder() + "/log";
  WriteFile(password, "sample-maria\r\nnot this\n");
  const Outcome outcome =
      test::Run(TheSite().As("maria") + QStringList{"--password-file", QString::fromStdString(password), "--log-file",
                                                    QString::fromStdString(log), "users"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  const auto lines = Lines(ReadFile(log));
  ASSERT_FALSE(lines.empty());
  const std::regex form("[0-9]+ [A-Za-z]+ \\[");
  for (const std::string& line : lines)
    EXPECT_TRUE(std::regex_search(line, form, std::regex_constants::match_continuous)) << line.substr(0, 200);
  EXPECT_TRUE(Has(ReadFile(log), "[src/QorviViewPlugin/")) << "paths are relative to the repository";
}

TEST_F(CommandsTest, TheDemoEndsWell) {
  const Outcome demo = test::Run({"demo"});
  EXPECT_EQ(demo.status, 0) << demo.err << demo.out;
  EXPECT_EQ(demo.err, "");
  std::smatch drawn;
  ASSERT_TRUE(std::regex_search(demo.out, drawn, std::regex("is drawn in (.+\\.svg)\n"))) << demo.out;
  EXPECT_TRUE(Has(ReadFile(drawn[1]), "<title>Platform 1 edge, magnified</title>")) << drawn[1];
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
