// SPDX-License-Identifier: Apache-2.0
// `viewctl script`, line for line, and by it the examples in docs/exchanges.md: each request, in the document's order,
// must be answered as written there.

#include <algorithm>
#include <set>

#include "../Cases.h"
#include "ViewctlRunner.h"
#include "host/JsonText.h"
#include "host/RawJson.h"

namespace test {
namespace {

class ScriptTest : public SiteTest {};

TEST_F(ScriptTest, EachLineIsAnsweredWithOneLine) {
  const auto exchanges = testing_support::Cases(TABLES "Script.txt");
  std::string input;
  for (const auto& [line, answer] : exchanges) input += line + "\r\n";
  const Outcome outcome = RunAs(TheSite(), "admin", {"script"}, input);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const auto lines = Lines(outcome.out);
  ASSERT_EQ(lines.size(), exchanges.size()) << outcome.out;
  for (size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(lines[i], exchanges[i].expected.at(0));
}

TEST_F(ScriptTest, WrongLinesAreAnsweredAndTheScriptGoesOnAlsoFromAFile) {
  const QString file = TheSite().File("script.jsonl");
  WriteFile(file, "what\n\n{\"call\":\"NoSuchCall\"}\n{\"call\":\"InitEnvir\"}");
  const Outcome outcome = RunAs(TheSite(), "admin", {"script", file});
  EXPECT_EQ(outcome.status, 1);
  const auto lines = Lines(outcome.out);
  ASSERT_EQ(lines.size(), 4u) << outcome.out;
  for (size_t i = 0; i < 3; ++i) EXPECT_TRUE(lines[i].starts_with("{\"error\":\"")) << lines[i];
  EXPECT_EQ(lines[3], R"({"call":"InitEnvir","result":true,"response":""})");
}

// What stands between `begin` and `end`, from `at` on, which moves behind it.
std::string Between(const std::string& text, size_t& at, const std::string& begin, const std::string& end) {
  const size_t from = std::min(text.find(begin, at), text.size() - begin.size()) + begin.size();
  at = std::min(text.find(end, from), text.size());
  return text.substr(from, at - from);
}

// An example is "Request to `Function`" and perhaps "Response", each followed by a block of JSON.
TEST(DocumentedExamplesTest, EveryExampleIsAnsweredAsWritten) {
  const std::string document = ReadFile(std::string(DOCS_DIR "/exchanges.md"));
  const std::string end = "\n```\n";
  std::set<std::string> shown;
  const Site site;
  Running host(site.As("admin") + QStringList{"script"}, "sample-admin");
  for (size_t at = 0; (at = document.find("\nRequest to `", at)) != std::string::npos;) {
    const std::string function = Between(document, at, "`", "`");
    shown.insert(function);
    const std::string request = host::WithoutBlanks(Between(document, at, "```json\n", end));
    ASSERT_TRUE(host::IsJson(request)) << function;
    std::string expected;
    if (document.find("\nResponse\n", at) == at + end.size()) {
      at += end.size();
      expected = host::WithoutBlanks(Between(document, at, "```json\n", end));
    }
    std::string response;
    // The two loads answer nothing while the platform still downloads.
    for (int attempt = 0; attempt < 100; ++attempt) {
      host.Write(R"({"call":")" + function + R"(","request":)" + request + "}\n");
      rapidjson::Document line;
      host::ParseJson(host.NextLine(), line);
      response = host::TextOf(line, "response");
      if (expected.empty() || !response.empty()) break;
      host.Write("{\"settle\":50}\n");
      host.NextLine();
    }
    EXPECT_EQ(response, expected) << function << " " << request;
  }
  EXPECT_EQ(shown.size(), 18u) << "each exchange and the registration have an example";
}

}  // namespace
}  // namespace test
