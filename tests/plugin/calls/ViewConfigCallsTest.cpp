// SPDX-License-Identifier: Apache-2.0
// The default view, and the calls that start and stop.
#include "CallFixture.h"

namespace call_test {
namespace {

class ViewConfigCallsTest : public CallTest {
 protected:
  static std::string Answer(const std::string& result, const std::string& text, const std::string& type,
                            const std::string& id) {
    return result + R"( {"error_module":0,"error_code":0,"error_info":")" + text +
           R"(","ViewData":{"ViewDefaultConfig":{"view_type":)" + type + R"(,"view_id":")" + id + R"("}}})";
  }
};

TEST_F(ViewConfigCallsTest, NoDefaultViewReachesTheHostAsMinusThree) {
  const std::pair<std::string, std::string> cases[] = {
      {Accepted(R"({"Config":{"Type":1,"ID":5}})"), Answer("true", "", "1", "5")},
      {Accepted(R"({"Config":{"Type":2,"ID":-1}})"), Answer("true", "", "2", "-3")},
      {Accepted(R"({"Config":{"Type":2,"ID":4294967280}})"), Answer("true", "", "2", "-16")},
      {Accepted(), Answer("true", "", "-1", "-3")},
      // No reply at all counts as success and tells nothing.
      {"", Answer("true", "", "0", "-3")},
      // A refusal is told together with whatever it holds.
      {R"({"ResponseStatus":{"ErrorModule":100,"ErrorCode":4,"Data":{"Config":{"Type":1,"ID":5}}}})",
       Answer("false", "Not permitted", "1", "5")},
      {"rubbish", Answer("false", "Error -1--1", "-1", "-3")},
  };
  for (const auto& [reply, expected] : cases) {
    server.Answer(reply);
    EXPECT_EQ(Call(GetClientViewConfig), expected) << reply;
  }
  server.BreakDown(ErrorCode(1, 7, 0, ""));
  EXPECT_EQ(Call(GetClientViewConfig), Answer("false", "The server could not be reached", "0", "-3"));
}

TEST_F(ViewConfigCallsTest, SettingTranslatesExactlyMinusThree) {
  const std::pair<std::string, std::string> cases[] = {{"-3", "-1"},  {"-33", "-33"}, {" -3", "-3"},
                                                       {"-3 ", "-3"}, {"abc", "0"},   {"2147483648", "2147483647"}};
  server.Answer(Accepted());
  for (const auto& [viewId, sent] : cases) {
    EXPECT_EQ(Call(SetClientViewConfig, R"({"view_type":2,"view_id":")" + viewId + "\"}"), R"(true {"error_info":""})");
    EXPECT_EQ(Sent(),
              R"(PUT /NXAPI/Vantorel/Platform/V1/View/Default/Config {"ViewRequest":{"Type":2,"ID":)" + sent + "}}")
        << viewId;
  }
  server.Answer(Refused(100, 1));
  EXPECT_EQ(Call(SetClientViewConfig), R"(false {"error_info":"The view does not exist"})");
}

TEST_F(ViewConfigCallsTest, StoppingReleasesNothing) {
  CacheView(View(5, kNoId, "five"));
  EXPECT_TRUE(UnInitEnvir() && InitEnvir() && InitEnvir() && UnInitEnvir() && UnInitEnvir());
  EXPECT_EQ(ViewName(5), "five");
  EXPECT_TRUE(IsSupportPlanChangeOrder());
}

}  // namespace
}  // namespace call_test
