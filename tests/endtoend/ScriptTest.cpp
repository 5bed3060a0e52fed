// SPDX-License-Identifier: Apache-2.0
// `viewctl script`, line for line, and by it the examples in docs/exchanges.md: each request, in the document's order,
// must be answered as written there.

#include <algorithm>
#include <set>

#include "ViewctlRunner.h"
#include "host/JsonText.h"
#include "host/RawJson.h"

namespace test {
namespace {

class ScriptTest : public SiteTest {};

TEST_F(ScriptTest, EachLineIsAnsweredWithOneLine) {
  const std::pair<const char*, const char*> exchanges[] = {
      {R"({"call":"IsSupportPlanChangeOrder"})", R"({"call":"IsSupportPlanChangeOrder","result":true,"response":""})"},
      {R"({"load":true})", R"({"load":true,"result":true})"},
      {R"({"call":"IsInitViewFinish","response":"as it was"})",
       R"({"call":"IsInitViewFinish","result":true,"response":"as it was"})"},
      {R"({"call":"GetPlanGroups","request":{"ParentID" : "12345"}})",
       R"({"call":"GetPlanGroups","result":true,"response":"{\"ErrorInfo\":\"\",\"Total\":0,\"PlanGroups\":[]}"})"},
      {R"({"call":"GetPlansInGroup","request":"{\"GroupID\":\"12345\"}"})",
       R"({"call":"GetPlansInGroup","result":false,"response":"{\"ErrorInfo\":\"KaBeAUoxlQkKBOqwV\",\"Total\":0,\"Plans\":[]}"})"},
      {R"({"call":"GetCurrentUser","request":"{"})",
       R"({"call":"GetCurrentUser","result":true,"response":"{\"user_id\":1,\"user_name\":\"admin\"}"})"},
      {R"( {"observe": {"ResourceType":16001 , "ID":"1"}})", R"( {"observe": {"ResourceType":16001 , "ID":"1"}})"},
      {R"({"unobserve":{"ResourceType":16001,"ID":"1"}})", R"({"unobserve":{"ResourceType":16001,"ID":"1"}})"},
      {R"({"call":"ViewRegisterResourceUpdate","request":{"ResourceType":16000,"ID":"101","IsRegister":true}})",
       R"({"call":"ViewRegisterResourceUpdate","result":null,"response":""})"},
      {R"({"settle":10})", R"({"settle":10})"},
      {R"({"call":"ClearViewData","response":"x"})", R"({"call":"ClearViewData","result":null,"response":"x"})"},
      {R"({"call":"UnInitEnvir"})", R"({"call":"UnInitEnvir","result":true,"response":""})"},
  };
  std::string input;
  for (const auto& exchange : exchanges) input += std::string(exchange.first) + "\r\n";
  const Outcome outcome = RunAs(TheSite(), "admin", {"script"}, input);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const auto lines = Lines(outcome.out);
  ASSERT_EQ(lines.size(), std::size(exchanges)) << outcome.out;
  for (size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(lines[i], exchanges[i].second);
}

TEST_F(ScriptTest, WrongLinesAreAnsweredAndTheScriptGoesOnAlsoFromAFile) {
  const std::string file = TheSite().Folder() + "/script.jsonl";
  WriteFile(file, "what\n\n{\"call\":\"NoSuchCall\"}\n{\"call\":\"InitEnvir\"}");
  const Outcome outcome = RunAs(TheSite(), "admin", {"script", QString::fromStdString(file)});
  EXPECT_EQ(outcome.status, 1);
  const auto lines = Lines(outcome.out);
  ASSERT_EQ(lines.size(), 4u) << outcome.out;
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(lines[i].rfind("{\"error\":\"", 0), 0u) << lines[i];
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
  const std::string document = ReadFile(DOCS_DIR "/exchanges.md");
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
