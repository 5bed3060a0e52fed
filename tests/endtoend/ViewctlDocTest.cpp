// SPDX-License-Identifier: Apache-2.0
// docs/viewctl.md: every example and every row of the table of messages, as maria at the sample site, in the order in
// which they stand.
#include <regex>

#include "ViewctlRunner.h"

namespace test {
namespace {

struct Example {
  int line = 0;
  std::string command;
  std::vector<std::string> expected;  // "..." stands for any lines
};

// Lines of ```console blocks: commands behind "$ ", each followed by what it says.
std::vector<Example> ExamplesOf(const std::vector<std::string>& lines) {
  std::vector<Example> examples;
  bool isInside = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].starts_with("```")) {
      isInside = lines[i] == "```console";
    } else if (isInside && lines[i].starts_with("$ ")) {
      examples.push_back({static_cast<int>(i) + 1, lines[i].substr(2), {}});
    } else if (isInside && !examples.empty()) {
      examples.back().expected.push_back(lines[i]);
    }
  }
  return examples;
}

// Rows "| `command` | what it says |".
std::vector<Example> MessagesOf(const std::vector<std::string>& lines) {
  static const std::regex row("\\| `((?:[^`]*; )?viewctl(?: [^`]*)?)` \\| ([^`].*) \\|");
  std::vector<Example> messages;
  for (size_t i = 0; i < lines.size(); ++i) {
    std::smatch parts;
    if (std::regex_match(lines[i], parts, row)) messages.push_back({static_cast<int>(i) + 1, parts[1], {parts[2]}});
  }
  return messages;
}

bool Fits(const std::vector<std::string>& said, const std::vector<std::string>& expected, size_t i = 0, size_t j = 0) {
  for (; j < expected.size() && expected[j] != "..."; ++i, ++j) {
    if (i == said.size() || said[i] != expected[j]) return false;
  }
  if (j == expected.size()) return i == said.size();
  for (; i <= said.size(); ++i) {
    if (Fits(said, expected, i, j + 1)) return true;
  }
  return false;
}

class ViewctlDocTest : public testing::Test {
 protected:
  // What comes of a shell, all on stdout, in which viewctl logs in as maria unless it is told otherwise.
  Outcome Say(const std::string& command) {
    const QString login = QString(R"(viewctl() {
  case " $* " in
    *" --server"* | *" --data"* | *" help "* | *" --help "*) command viewctl "$@" ;;
    *" --user "*) command viewctl --server %1 "$@" ;;
    *) command viewctl --server %1 --user maria "$@" ;;
  esac
}
cd '%2' && export VIEWCTL_PASSWORD=sample-maria
{ )")
                              .arg(m_site.Address(), m_folder.path());
    Outcome outcome = RunShell(login + QString::fromStdString(command) + "\n} 2>&1", {}, "bash");
    outcome.command = command;
    outcome.out = QString::fromStdString(outcome.out).replace(m_site.Address(), "https://site:8090").toStdString();
    return outcome;
  }

  // Mistakes of the command line end with 2; these with 1, for what is there, and those of a log-in with 3.
  static int StatusOf(const std::string& message) {
    static const std::regex refused(
        ".* is a (folder|view); .*|There is no view 9999; .*|View (110|137) .*|The server has no camera 7777, .*");
    static const std::regex noLogin("No login as .*|The own server has no user .*");
    return std::regex_match(message, refused) ? 1 : std::regex_match(message, noLogin) ? 3 : 2;
  }

  const std::vector<std::string> m_lines = Lines(ReadFile(std::string(DOCS_DIR "/viewctl.md")));
  Site m_site;

 private:
  QTemporaryDir m_folder;
};

TEST_F(ViewctlDocTest, EveryExampleAndMessageIsSaidAsItStands) {
  const std::vector<Example> examples = ExamplesOf(m_lines);
  EXPECT_GE(examples.size(), 20u);
  for (const Example& example : examples) {
    const Outcome outcome = Say(example.command);
    EXPECT_TRUE(Fits(Lines(outcome.out), example.expected)) << "viewctl.md:" << example.line << ": " << outcome;
  }
  // The messages are those of the files that the examples have made.
  const std::vector<Example> messages = MessagesOf(m_lines);
  EXPECT_GE(messages.size(), 20u);
  for (const Example& message : messages) {
    const Outcome outcome = Say(message.command);
    EXPECT_EQ(outcome.LastLine(), "viewctl: " + message.expected[0])
        << "viewctl.md:" << message.line << ": " << outcome;
    EXPECT_EQ(outcome.status, StatusOf(message.expected[0])) << outcome;
    // Whatever else is said is no result.
    static const std::regex notes("((Editing|Delete|A new store) .*\n)*viewctl: .*\n");
    EXPECT_TRUE(std::regex_match(outcome.out, notes)) << outcome;
  }
}

}  // namespace
}  // namespace test
