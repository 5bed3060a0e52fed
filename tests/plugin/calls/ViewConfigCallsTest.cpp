// SPDX-License-Identifier: Apache-2.0
// The default view, the observers, and the calls that start, stop and tell states.
#include "CallFixture.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "ResourceStore/ViewGroupManager.h"

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

TEST_F(ViewConfigCallsTest, TheDefaultViewIsAnsweredTwoObjectsDeep) {
  server.Answer(Accepted(R"({"Config":{"Type":1,"ID":5}})"));
  EXPECT_EQ(Call(GetClientViewConfig, R"({"request_info":"x"})"),
            R"(true {"error_module":0,"error_code":0,"error_info":"",)"
            R"("ViewData":{"ViewDefaultConfig":{"view_type":1,"view_id":"5"}}})");
  EXPECT_EQ(Sent(), (SentRequest{"GET", kUrl, "", "", 0}));
}

TEST_F(ViewConfigCallsTest, NoDefaultViewReachesTheHostAsMinusThree) {
  const struct {
    std::string reply;
    std::string expected;
  } cases[] = {
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
  for (const auto& c : cases) {
    server.Answer(c.reply);
    EXPECT_EQ(Get(), c.expected) << c.reply;
  }
  server.BreakDown(ErrorCode(1, 7, 0, ""));
  EXPECT_EQ(Get(), "false 0 -3 The server could not be reached");
}

TEST_F(ViewConfigCallsTest, SettingTranslatesExactlyMinusThree) {
  const struct {
    std::string viewId;
    std::string sent;
  } cases[] = {{"-3", "-1"},  {"-1", "-1"},  {"-33", "-33"},
               {" -3", "-3"}, {"-3 ", "-3"}, {"5", "5"},
               {"abc", "0"},  {"", "0"},     {"2147483648", "2147483647"}};
  server.Answer(Accepted());
  for (const auto& c : cases) {
    EXPECT_EQ(Call(SetClientViewConfig, R"({"view_type":2,"view_id":")" + c.viewId + "\"}"),
              R"(true {"error_info":""})");
    EXPECT_EQ(Sent(), (SentRequest{"PUT", kUrl, R"({"ViewRequest":{"Type":2,"ID":)" + c.sent + "}}", "", 0}))
        << c.viewId;
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

TEST_F(ViewConfigCallsTest, AnObserverHearsOfChangesFromItsRegistrationToItsWithdrawal) {
  core_test::NotingObserver observer;
  auto view = View(5);
  CacheView(view);
  ViewRegisterResourceUpdate(&observer, core_test::RegistrationText(core_test::kView, "5", true));
  ViewRegisterResourceUpdate(nullptr, core_test::RegistrationText(core_test::kView, "5", true));
  ViewRegisterResourceUpdate(&observer, "{");
  Manager().UpdateViewInCache(view);
  EXPECT_EQ(observer.Take().size(), 1u);
  ViewRegisterResourceUpdate(&observer, core_test::RegistrationText(core_test::kView, "5", false));
  Manager().UpdateViewInCache(view);
  EXPECT_TRUE(observer.Take().empty());
}

TEST_F(ViewConfigCallsTest, StartingAndStoppingAnswerTrueInAnyOrder) {
  EXPECT_TRUE(UnInitEnvir());
  EXPECT_TRUE(InitEnvir());
  EXPECT_TRUE(InitEnvir());
  EXPECT_TRUE(IsSupportPlanChangeOrder());
  EXPECT_TRUE(UnInitEnvir());
  EXPECT_TRUE(UnInitEnvir());
  EXPECT_TRUE(IsSupportPlanChangeOrder());
}

TEST_F(ViewConfigCallsTest, StoppingReleasesNothing) {
  CacheView(5, "five", 0, QorviViewPlugin::kNoId);
  InitEnvir();
  UnInitEnvir();
  EXPECT_EQ(ViewName(5), "five");
}

TEST_F(ViewConfigCallsTest, TheDownloadsStateIsThePlatforms) {
  auto& downloads = Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
  EXPECT_FALSE(IsViewResourceDownFinish());
  downloads.SetDownloadedData("", "", true);
  EXPECT_TRUE(IsViewResourceDownFinish());
}

}  // namespace
}  // namespace call_test
