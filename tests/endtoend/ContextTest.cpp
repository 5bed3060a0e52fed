// SPDX-License-Identifier: Apache-2.0
// Which server, user and password count where the command line leaves them open.
#include "TerminalRunner.h"

namespace test {
namespace {

class ContextTest : public SiteTest {
 protected:
  // A shell that may set variables of its own, in a folder with a file "config".
  Outcome Shell(const QString& command) { return RunShell("cd '" + m_folder.path() + "'; " + command); }
  void Configure(const std::string& text) { WriteFile(m_folder.filePath("config"), text); }
  static std::string Url() { return TheSite().Url(); }

  QTemporaryDir m_folder;
};

TEST_F(ContextTest, TheLineCountsMoreThanVariablesAndTheseMoreThanTheFile) {
  WriteFile(m_folder.filePath("secret"), "sample-kenji\n");
  Configure("# mine\ndefault = main\n\n[main]\nurl = " + Url() +
            "\nuser=maria\npassword-command = echo sample-maria; echo more\n"
            "[other]\nurl = http://127.0.0.1:1\nuser = nobody\n");
  const QString file = "export VIEWCTL_CONFIG=config; ";
  const std::tuple<QString, int, std::string> cases[] = {
      {file + "viewctl call UpdatePlanGroup '{\"ID\":\"9\",\"Name\":\"My rounds\"}'", 0, Url() + " as maria\n"},
      {file + "viewctl --server main tree", 0, ""},
      {file + "VIEWCTL_SERVER=other VIEWCTL_PASSWORD=x viewctl tree", 3, "No login as nobody at http://127.0.0.1:1"},
      {file + "VIEWCTL_SERVER=other viewctl --server main tree", 0, ""},
      {file + "VIEWCTL_USER=kenji VIEWCTL_PASSWORD=sample-kenji viewctl tree", 0, ""},
      {file + "VIEWCTL_USER=kenji viewctl tree", 3, "No login as kenji at " + Url()},
      {file + "VIEWCTL_USER=nobody VIEWCTL_PASSWORD=x viewctl --user kenji --password-file secret tree", 0, ""},
      {file + "viewctl tree --data own", 0, "A new store was made"},
      {"VIEWCTL_SERVER=" + TheSite().Address() + " VIEWCTL_USER=maria VIEWCTL_PASSWORD=sample-maria viewctl tree", 0,
       ""},
      {"VIEWCTL_SERVER= viewctl tree", 2, "VIEWCTL_SERVER is set to nothing: set it, or unset it"},
      {"VIEWCTL_SERVER= viewctl man tree", 0, ".TH VIEWCTL\\-TREE 1"},  // which asks no server
      {file + "VIEWCTL_USER= viewctl tree", 2, "VIEWCTL_USER is set to nothing: set it, or unset it"},
      {file + "viewctl --server mian tree", 2, "nor a server that config names; did you mean main? (viewctl servers"},
  };
  for (const auto& [command, status, part] : cases) ExpectSaid(Shell(command), status, part);
}

TEST_F(ContextTest, TheServersOfTheFileAreListedAndCompleted) {
  Configure("default = main\n[main]\nurl = http://a:1\nuser = maria\n[other]\nurl = http://b:2\n");
  const std::string rows =
      "NAME   DEFAULT  USER   URL\nmain   yes      maria  http://a:1\nother  no              http://b:2\n";
  const QString file = "VIEWCTL_CONFIG=config viewctl ";
  EXPECT_EQ(Shell(file + "servers").out, rows);
  EXPECT_EQ(Shell(file + "servers --json").out,
            "[\n{\"Name\":\"main\",\"URL\":\"http://a:1\",\"User\":\"maria\",\"Default\":true},\n"
            "{\"Name\":\"other\",\"URL\":\"http://b:2\",\"User\":\"\",\"Default\":false}]\n");
  EXPECT_EQ(Shell(file + "__complete --line 'viewctl --server o'").out, "other\thttp://b:2\n");
  // A backslash behind which nothing was typed yet is part of the name.
  Configure("[a\\b]\nurl = http://a:1\n");
  EXPECT_EQ(Shell(file + "__complete --line 'viewctl --server a\\'").out, "a\\b\thttp://a:1\n");
  EXPECT_EQ(Shell("viewctl servers").err, "No server is named in /dev/null\n");
}

TEST_F(ContextTest, AFileWithAMistakeIsToldByItsLine) {
  const std::string login = "default = a\n[a]\nurl = " + Url() + "\npassword-command = ";
  const std::pair<std::string, const char*> cases[] = {
      {"[a]\nurl = http://x\nusr = maria\n", "config, line 3: there is no key usr of a server; did you mean user?"},
      {"[a]\nurl\n", "config, line 2: \"url\" is neither [NAME] nor KEY = VALUE"},
      {"[a\n", "config, line 1: a server's name stands between [ and ]"},
      {"[a]\nurl = http://x\n[a]\n", "config, line 3: there are two servers a"},
      {"[a]\nurl =\n", "config, line 2: url has no value"},
      {"[a]\nurl = http://x\nurl = http://y\n", "config, line 3: url is said twice"},
      {"default = b\n", "config: there is no server b, which is to be the default"},
      {login + "echo locked >&2; exit 3\n",
       "locked\nviewctl: The password-command ended with status 3; run it by itself to see why"},
      {login + "true\n", "viewctl: The password-command printed no password; run it by itself to see why: true"},
  };
  for (const auto& [text, part] : cases) {
    Configure(text);
    ExpectMessage(Shell("VIEWCTL_CONFIG=config viewctl tree"), 2, part);
  }
  ExpectMessage(Shell("VIEWCTL_CONFIG=none viewctl tree"), 2, "The file none cannot be read");
}

TEST_F(ContextTest, APasswordIsAskedForOnATerminalAndNotShown) {
  const std::string question = "Password of maria at " + Url() + ": ";
  const std::tuple<std::string, int, const char*> cases[] = {
      {"sample-maria\n", 0, "ONLINE"},
      {"wrong-secret\n", 3, "Wrong user name or password"},
      {"\n", 2, "No password was given"},
      {"\x03", 2, "No password was given"},
  };
  for (const auto& [typed, status, part] : cases) {
    OnTerminal users(TheSite().As("maria") + QStringList{"users"}, {});
    ASSERT_TRUE(Has(users.SaysUntil(question), question));
    users.Type(typed);
    const Outcome outcome = users.Finish();
    ExpectSaid(outcome, status, part);
    EXPECT_FALSE(Has(outcome.out, "sample-maria") || Has(outcome.out, "wrong-secret")) << outcome.out;
  }
}

}  // namespace
}  // namespace test
