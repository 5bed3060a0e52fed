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
  // stdout and stderr of a shell in which viewctl logs in as maria unless it is told otherwise.
  std::string Say(const std::string& command) {
    const QString login = QString(R"(viewctl() {
  case " $* " in
    *" --server"* | *" --data"* | *" help "* | *" --help "*) '%1' "$@" ;;
    *" --user "*) '%1' --server %2 "$@" ;;
    *) '%1' --server %2 --user maria "$@" ;;
  esac
}
cd '%3' && export VIEWCTL_PASSWORD=${VIEWCTL_PASSWORD-sample-maria}
{ )")
                              .arg(QString(VIEWCTL_FILE), QString::fromStdString(m_site.Url()), m_folder.path());
    const Outcome outcome =
        test::Run({"-c", login + QString::fromStdString(command) + "\n} 2>&1"}, "sample-maria", {}, "bash");
    QString said = QString::fromStdString(outcome.out);
    said.replace(QString::fromStdString(m_site.Url()), "https://site:8090");
    return said.toStdString();
  }

  const std::vector<std::string> m_lines = Lines(ReadFile(DOCS_DIR "/viewctl.md"));
  Site m_site;

 private:
  QTemporaryDir m_folder;
};

TEST_F(ViewctlDocTest, EveryExampleAndMessageIsSaidAsItStands) {
  const std::vector<Example> examples = ExamplesOf(m_lines);
  EXPECT_GE(examples.size(), 20u);
  for (const Example& example : examples) {
    const std::string said = Say(example.command);
    EXPECT_TRUE(Fits(Lines(said), example.expected)) << "viewctl.md:" << example.line << ": " << example.command << "\n"
                                                     << said;
  }
  // The messages are those of the files that the examples have made.
  const std::vector<Example> messages = MessagesOf(m_lines);
  EXPECT_GE(messages.size(), 20u);
  for (const Example& message : messages) {
    const auto said = Lines(Say(message.command));
    const std::string wanted = "viewctl: " + message.expected[0];
    EXPECT_TRUE(!said.empty() && said.back() == wanted)
        << "viewctl.md:" << message.line << ": " << message.command << "\n"
        << (said.empty() ? "nothing" : said.back());
  }
}

}  // namespace
}  // namespace test
