// SPDX-License-Identifier: Apache-2.0
// `viewctl script`, line for line, and by it the examples in docs/exchanges.md: each request, in the document's order,
// must be answered as written there.

#include <set>

#include "ViewctlRunner.h"
#include "host/JsonText.h"
#include "host/RawJson.h"

namespace test {
namespace {

class ScriptTest : public SiteTest {
 protected:
  static Outcome Script(const std::string& input) { return RunAs(TheSite(), "admin", {"script"}, input); }
};

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
  const Outcome outcome = Script(input);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const auto lines = Lines(outcome.out);
  ASSERT_EQ(lines.size(), std::size(exchanges)) << outcome.out;
  for (size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(lines[i], exchanges[i].second);
}

TEST_F(ScriptTest, WrongLinesAreAnsweredAndTheScriptGoesOn) {
  const Outcome outcome = Script("what\n\n{\"call\":\"NoSuchCall\"}\n{\"call\":\"InitEnvir\"}");
  EXPECT_EQ(outcome.status, 1);
  const auto lines = Lines(outcome.out);
  ASSERT_EQ(lines.size(), 4u) << outcome.out;
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(lines[i].rfind("{\"error\":\"", 0), 0u) << lines[i];
  EXPECT_EQ(lines[3], R"({"call":"InitEnvir","result":true,"response":""})");
}

TEST_F(ScriptTest, AScriptMayStandInAFile) {
  const std::string file = TheSite().Folder() + "/script.jsonl";
  WriteFile(file, "{\"call\":\"InitEnvir\"}\n");
  const Outcome outcome = RunAs(TheSite(), "admin", {"script", QString::fromStdString(file)});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "{\"call\":\"InitEnvir\",\"result\":true,\"response\":\"\"}\n");
}

struct Example {
  std::string function;
  std::string request;
  std::string response;  // empty: nothing is answered
};

// An example is "Request to `Function`" and "Response", each followed by a block of JSON.
std::vector<Example> ExamplesIn(const std::string& document) {
  std::vector<Example> examples;
  std::string block;
  std::string* wanted = nullptr;
  bool inBlock = false;
  const std::string heading = "Request to `";
  for (const std::string& line : Lines(document)) {
    if (inBlock && line == "```") {
      if (wanted != nullptr) *wanted = host::WithoutBlanks(block);
      wanted = nullptr;
      inBlock = false;
    } else if (inBlock) {
      block += line + "\n";
    } else if (line == "```json") {
      inBlock = true;
      block.clear();
    } else if (line.rfind(heading, 0) == 0) {
      examples.push_back({line.substr(heading.size(), line.rfind('`') - heading.size()), {}, {}});
      wanted = &examples.back().request;
    } else if (line == "Response") {
      wanted = examples.empty() ? nullptr : &examples.back().response;
    }
  }
  return examples;
}

std::string ResponseIn(const std::string& answer) {
  rapidjson::Document line;
  host::ParseJson(answer, line);
  return host::TextOf(line, "response");
}

TEST(DocumentedExamplesTest, EveryExampleIsAnsweredAsWritten) {
  const std::vector<Example> examples = ExamplesIn(ReadFile(DOCS_DIR "/exchanges.md"));
  std::set<std::string> shown;

  Site site;
  Running host(site.As("admin") + QStringList{"script"}, "sample-admin");
  for (const Example& example : examples) {
    ASSERT_TRUE(host::IsJson(example.request)) << example.function;
    shown.insert(example.function);
    const std::string line = R"({"call":")" + example.function + R"(","request":)" + example.request + "}\n";
    std::string response;
    // The two loads answer nothing while the platform still downloads.
    for (int attempt = 0; attempt < 100 && response.empty(); ++attempt) {
      host.Write(line);
      response = ResponseIn(host.NextLine());
      if (example.response.empty()) break;
      if (response.empty()) host.Write("{\"settle\":50}\n"), host.NextLine();
    }
    EXPECT_EQ(response, example.response) << example.function << " " << example.request;
  }

  EXPECT_EQ(shown.size(), 18u) << "each exchange and the registration have an example";
}

}  // namespace
}  // namespace test
