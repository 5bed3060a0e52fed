// SPDX-License-Identifier: Apache-2.0
// The examples in docs/exchanges.md: each request, in the document's order, must be answered as written there.

#include <set>

#include "ViewctlRunner.h"
#include "host/JsonText.h"
#include "host/RawJson.h"

namespace test {
namespace {

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
