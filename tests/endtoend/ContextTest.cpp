// SPDX-License-Identifier: Apache-2.0
// Which server, user and password count where the command line leaves them open.
#include <chrono>
#include <thread>

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
  for (const Row& row : RowsOf(TABLES "Context.txt", TheSite())) ExpectRow(Shell(row.command), row);
}

TEST_F(ContextTest, TheServersOfTheFileAreListedAndCompleted) {
  Configure("default = main\n[main]\nurl = http://a:1\nuser = maria\n[other]\nurl = http://b:2\n");
  for (const Row& row : RowsOf(TABLES "Context.txt", TheSite())) ExpectRow(Shell(row.command), row);
  const QString file = "VIEWCTL_CONFIG=config viewctl ";
  EXPECT_EQ(Shell(file + "__complete --line 'viewctl --server o'").out, "other\thttp://b:2\n");
  // A backslash behind which nothing was typed yet is part of the name.
  Configure("[a\\b]\nurl = http://a:1\n");
  EXPECT_EQ(Shell(file + "__complete --line 'viewctl --server a\\'").out, "a\\b\thttp://a:1\n");
  EXPECT_EQ(Shell("viewctl servers").err, "No server is named in /dev/null\n");
}

TEST_F(ContextTest, AFileWithAMistakeIsToldByItsLine) {
  for (const auto& [status, text, parts] : RowsOf(TABLES "Context.txt", TheSite())) {
    Configure(text.toStdString());
    ExpectMessage(Shell("VIEWCTL_CONFIG=config viewctl tree"), status, parts.at(0));
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
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // by then it waits, which Ctrl-C interrupts
    users.Type(typed);
    const Outcome outcome = users.Finish();
    ExpectSaid(outcome, status, part);
    EXPECT_FALSE(Has(outcome.out, "sample-maria") || Has(outcome.out, "wrong-secret")) << outcome.out;
  }
}

TEST_F(ContextTest, OnceThePasswordIsReadTheTerminalIsAsBefore) {
  OnTerminal rm(TheSite().As("maria") + QStringList{"rm", "110"}, {});
  ASSERT_TRUE(Has(rm.SaysUntil(Url() + ": "), Url() + ": "));
  rm.Type("sample-maria\n");
  EXPECT_TRUE(Has(rm.SaysUntil("[y/N] "), "Delete 1 thing? [y/N] ")) << "stdin is still open";
  rm.Type("no");
  EXPECT_TRUE(Has(rm.SaysUntil("[y/N] no"), "[y/N] no")) << "what is typed is shown";
  rm.Type("\x03");
  EXPECT_EQ(rm.Finish().status, -1) << "Ctrl-C ends the program";
}

}  // namespace
}  // namespace test
