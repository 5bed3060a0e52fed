// SPDX-License-Identifier: Apache-2.0
// The default view, and the calls that start and stop.
#include "CallFixture.h"
#include "QorviViewPlugin/QorviViewPlugin.h"

namespace call_test {
namespace {

constexpr char kUrl[] = "/NXAPI/Vantorel/Platform/V1/View/Default/Config";

class ViewConfigCallsTest : public CallTest {
 protected:
  // The default view that the host gets: "<result> <type> <id> <error text>".
  static std::string Get() {
    const std::string answer = Call(GetClientViewConfig);
    const std::string response = answer.substr(answer.find('{'));
    EXPECT_EQ(At(response, "/error_module") + At(response, "/error_code"), "00");
    return answer.substr(0, answer.find('{')) + At(response, "/ViewData/ViewDefaultConfig/view_type") + " " +
           At(response, "/ViewData/ViewDefaultConfig/view_id") + " " + At(response, "/error_info");
  }
};

TEST_F(ViewConfigCallsTest, NoDefaultViewReachesTheHostAsMinusThree) {
  server.Answer(Accepted(R"({"Config":{"Type":1,"ID":5}})"));
  EXPECT_EQ(Call(GetClientViewConfig, R"({"request_info":"x"})"),
            R"(true {"error_module":0,"error_code":0,"error_info":"",)"
            R"("ViewData":{"ViewDefaultConfig":{"view_type":1,"view_id":"5"}}})");
  EXPECT_EQ(Sent(), (SentRequest{"GET", kUrl, "", "", 0}));
  const std::pair<std::string, std::string> cases[] = {
      {Accepted(R"({"Config":{"Type":2,"ID":-1}})"), "true 2 -3 "},
      {Accepted(R"({"Config":{"Type":2,"ID":-3}})"), "true 2 -3 "},
      {Accepted(R"({"Config":{"Type":2,"ID":-2}})"), "true 2 -2 "},
      {Accepted(R"({"Config":{"Type":2,"ID":4294967280}})"), "true 2 -16 "},
      {Accepted(), "true -1 -3 "},
      // No reply at all counts as success and tells nothing.
      {"", "true 0 -3 "},
      // A refusal is told together with whatever it holds.
      {Refused(100, 4), "false -1 -3 Not permitted"},
      {R"({"ResponseStatus":{"ErrorModule":100,"ErrorCode":4,"Data":{"Config":{"Type":1,"ID":5}}}})",
       "false 1 5 Not permitted"},
      {"rubbish", "false -1 -3 Error -1--1"},
  };
  for (const auto& [reply, expected] : cases) {
    server.Answer(reply);
    EXPECT_EQ(Get(), expected) << reply;
  }
  server.BreakDown(ErrorCode(1, 7, 0, ""));
  EXPECT_EQ(Get(), "false 0 -3 The server could not be reached");
}

TEST_F(ViewConfigCallsTest, SettingTranslatesExactlyMinusThree) {
  const std::pair<std::string, std::string> cases[] = {{"-3", "-1"},  {"-1", "-1"},  {"-33", "-33"},
                                                       {" -3", "-3"}, {"-3 ", "-3"}, {"5", "5"},
                                                       {"abc", "0"},  {"", "0"},     {"2147483648", "2147483647"}};
  server.Answer(Accepted());
  for (const auto& [viewId, sent] : cases) {
    EXPECT_EQ(Call(SetClientViewConfig, R"({"view_type":2,"view_id":")" + viewId + "\"}"), R"(true {"error_info":""})");
    EXPECT_EQ(Sent(), (SentRequest{"PUT", kUrl, R"({"ViewRequest":{"Type":2,"ID":)" + sent + "}}", "", 0})) << viewId;
  }
}

TEST_F(ViewConfigCallsTest, SettingFailsWithTheServersOrTheTransportsText) {
  server.Answer("");
  EXPECT_EQ(Call(SetClientViewConfig), R"(true {"error_info":""})");
  server.Answer(Refused(100, 1));
  EXPECT_EQ(Call(SetClientViewConfig), R"(false {"error_info":"The view does not exist"})");
  server.BreakDown(ErrorCode(4, 503, 0, ""));
  EXPECT_EQ(Call(SetClientViewConfig), R"(false {"error_info":"The server is not available at the moment"})");
}

TEST_F(ViewConfigCallsTest, StoppingReleasesNothing) {
  CacheView(5, "five", 0, QorviViewPlugin::kNoId);
  EXPECT_TRUE(UnInitEnvir() && InitEnvir() && InitEnvir() && UnInitEnvir() && UnInitEnvir());
  EXPECT_EQ(ViewName(5), "five");
  EXPECT_TRUE(IsSupportPlanChangeOrder());
}

}  // namespace
}  // namespace call_test
