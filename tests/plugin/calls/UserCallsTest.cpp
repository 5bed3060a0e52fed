// SPDX-License-Identifier: Apache-2.0
// The users and their default views, and the calls that start and stop.
#include "CallFixture.h"

namespace call_test {
namespace {

using ResourceStore::CUserInfo;

class UserCallsTest : public CallTest {
 protected:
  UserCallsTest() { log->Take(); }

  // Has the server give the replies of the running test's cases, "(nothing)" being an empty one. Below each stand the
  // answer and, if it counts, the last line of the log.
  void ExpectTold(Exchange exchange) {
    for (const auto& [reply, expected] : testing_support::Cases(CALL_TEXTS)) {
      server.Answer(reply == "(nothing)" ? "" : reply);
      EXPECT_EQ(Call(exchange), expected.at(0)) << reply;
      const Texts lines = log->Take();
      if (expected.size() > 1) {
        EXPECT_EQ(lines.back(), InfoLine(expected[1])) << reply;
      }
    }
  }
};

TEST_F(UserCallsTest, TheCurrentUserIsThePlatforms) {
  EXPECT_EQ(Call(GetCurrentUser, R"({"str_request":"x"})"), R"(true {"user_id":7,"user_name":"operator"})");
  BizShared::CUserCommonManager::Instance().Logout();
  EXPECT_EQ(Call(GetCurrentUser), R"(false {"user_id":-1,"user_name":""})");
  EXPECT_EQ(log->Take(), (Texts{InfoLine("[GetCurrentUser]GetCurrentUser Success"),
                                InfoLine("[GetCurrentUser]GetCurrentUser Failed")}));
}

TEST_F(UserCallsTest, AllUsersAreListedInTheServersOrderAndNobodyWhereThatFails) {
  Users().SetDownload({std::make_shared<CUserInfo>(0x1'0000'0009, "zoe", true, 2),
                       std::make_shared<CUserInfo>(-1, "\xC3\xA4", false, -5)},
                      ErrorCode());
  EXPECT_EQ(Call(GetAllUserInfo, R"({"request_info":"x"})"),
            R"(true {"error_info":"","user_detail_list":[)"
            R"({"user_id":9,"user_name":"zoe","user_online":true,"user_ptz_ability":2},)"
            "{\"user_id\":-1,\"user_name\":\"\xC3\xA4\",\"user_online\":false,\"user_ptz_ability\":-5}]}");
  Users().SetDownload({}, ErrorCode(100, 8, 0, ""));
  EXPECT_EQ(Call(GetAllUserInfo), R"(false {"error_info":"Internal error of the server","user_detail_list":[]})");
  EXPECT_EQ(log->Take(), (Texts{InfoLine("[GetAllUserInfo]GetAllUserInfo Success User Number: 2"),
                                InfoLine("[GetAllUserInfo]GetAllUserInfo Failed: Internal error of the server")}));
}

TEST_F(UserCallsTest, SharingSendsTheUsersAndTheIdAsTheyStand) {
  server.Answer(Accepted());
  EXPECT_EQ(Call(ViewShareUsers, R"({"share_users":"1,2,\"x\"","view_id":"abc"})"),
            R"(true {"error_model":0,"error_code":0,"error_info":"","lst_user_data":[]})");
  const std::string body = R"({"ViewShare":{"ShareUsers":"1,2,\"x\""}})";
  EXPECT_EQ(Sent(), "POST /NXAPI/Vantorel/Platform/V1/View/abc/Share " + body);
  EXPECT_EQ(log->Take(), (Texts{InfoLine("[ViewShareUsers]ViewShare User Ids Request: " + body),
                                InfoLine("[ViewShareUsers]Share View Recvive Data: " + Accepted())}));
}

TEST_F(UserCallsTest, SharingIsWholeOnlyWhereTheServerSaysSoAndNamesNobody) {
  ExpectTold(ViewShareUsers);
  server.BreakDown(ErrorCode(1, 3, 5, "bad"));
  EXPECT_EQ(Call(ViewShareUsers),
            R"(false {"error_model":1,"error_code":3,"error_info":"The address of the request is )"
            R"(not valid: bad","lst_user_data":[]})");
  EXPECT_EQ(log->Take().back(), InfoLine("[ViewShareUsers]View Share ORL Failed First_code: 1, Second_code: 3"));
}

TEST_F(UserCallsTest, UsersWhoCouldNotBeGivenTheViewAreListedInTheServersOrder) {
  // Also a lone entry in place of a list; code 0 has no text, yet the user counts as left out.
  ExpectTold(ViewShareUsers);
}

class ViewConfigCallsTest : public UserCallsTest {};

TEST_F(ViewConfigCallsTest, NoDefaultViewReachesTheHostAsMinusThree) {
  // No reply at all counts as success and tells nothing; a refusal is told together with whatever it holds.
  ExpectTold(GetClientViewConfig);
  server.BreakDown(ErrorCode(1, 7, 0, ""));
  EXPECT_EQ(Call(GetClientViewConfig),
            R"(false {"error_module":0,"error_code":0,"error_info":"The server could not be reached",)"
            R"("ViewData":{"ViewDefaultConfig":{"view_type":0,"view_id":"-3"}}})");
}

TEST_F(ViewConfigCallsTest, SettingTranslatesExactlyMinusThree) {
  server.Answer(Accepted());
  ExpectAnswers();
}

TEST_F(ViewConfigCallsTest, StoppingReleasesNothing) {
  CacheView(View(5, kNoId, "five"));
  EXPECT_TRUE(UnInitEnvir() && InitEnvir() && InitEnvir() && UnInitEnvir() && UnInitEnvir());
  EXPECT_EQ(ViewName(5), "five");
  EXPECT_TRUE(IsSupportPlanChangeOrder());
}

}  // namespace
}  // namespace call_test
