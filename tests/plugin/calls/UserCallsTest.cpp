// SPDX-License-Identifier: Apache-2.0
#include "CallFixture.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "ResourceStore/OrlUserManager.h"

namespace call_test {
namespace {

using ResourceStore::CUserInfo;

class UserCallsTest : public CallTest {
 protected:
  UserCallsTest() { log->Take(); }
  ~UserCallsTest() override { Downloads().ResetDownload(); }

  static ResourceStore::COrlUserManager& Downloads() {
    return Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance();
  }
};

TEST_F(UserCallsTest, TheCurrentUserIsThePlatforms) {
  EXPECT_EQ(Call(GetCurrentUser, R"({"str_request":"x"})"), R"(true {"user_id":7,"user_name":"operator"})");
  EXPECT_EQ(log->Take(), Texts{InfoLine("[GetCurrentUser]GetCurrentUser Success")});
  Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance().Logout();
  EXPECT_EQ(Call(GetCurrentUser), R"(false {"user_id":-1,"user_name":""})");
  EXPECT_EQ(log->Take(), Texts{InfoLine("[GetCurrentUser]GetCurrentUser Failed")});
}

TEST_F(UserCallsTest, AllUsersAreListedInTheServersOrderAndNobodyWhereThatFails) {
  Downloads().SetDownload({std::make_shared<CUserInfo>(0x1'0000'0009, "zoe", true, 2),
                           std::make_shared<CUserInfo>(-1, "\xC3\xA4", false, -5)},
                          ErrorCode());
  EXPECT_EQ(Call(GetAllUserInfo, R"({"request_info":"x"})"),
            R"(true {"error_info":"","user_detail_list":[)"
            R"({"user_id":9,"user_name":"zoe","user_online":true,"user_ptz_ability":2},)"
            "{\"user_id\":-1,\"user_name\":\"\xC3\xA4\",\"user_online\":false,\"user_ptz_ability\":-5}]}");
  EXPECT_EQ(log->Take(), Texts{InfoLine("[GetAllUserInfo]GetAllUserInfo Success User Number: 2")});
  Downloads().SetDownload({}, ErrorCode(100, 8, 0, ""));
  EXPECT_EQ(Call(GetAllUserInfo), R"(false {"error_info":"Internal error of the server","user_detail_list":[]})");
  EXPECT_EQ(log->Take(), Texts{InfoLine("[GetAllUserInfo]GetAllUserInfo Failed: Internal error of the server")});
  Downloads().SetDownload({}, ErrorCode());
  EXPECT_EQ(Call(GetAllUserInfo), R"(true {"error_info":"","user_detail_list":[]})");
}

TEST_F(UserCallsTest, SharingSendsTheUsersAndTheIdAsTheyStand) {
  server.Answer(Accepted());
  EXPECT_EQ(Call(ViewShareUsers, R"({"share_users":"1,2,\"x\"","view_id":"abc"})"),
            R"(true {"error_model":0,"error_code":0,"error_info":"","lst_user_data":[]})");
  const std::string body = R"({"ViewShare":{"ShareUsers":"1,2,\"x\""}})";
  EXPECT_EQ(Sent(), (SentRequest{"POST", "/NXAPI/Vantorel/Platform/V1/View/abc/Share", body, "", 0}));
  EXPECT_EQ(log->Take(), (Texts{InfoLine("[ViewShareUsers]ViewShare User Ids Request: " + body),
                                InfoLine("[ViewShareUsers]Share View Recvive Data: " + Accepted())}));
  Call(ViewShareUsers);
  EXPECT_EQ(Sent().url, "/NXAPI/Vantorel/Platform/V1/View//Share");
}

TEST_F(UserCallsTest, SharingIsWholeOnlyWhereTheServerSaysSoAndNamesNobody) {
  const std::string noErrors[] = {Accepted(R"({"ErrorList":{}})"), Accepted(R"({"ErrorList":{"Error":[]}})"),
                                  Accepted(R"({"ErrorList":{"Error":null}})"),
                                  R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0}})"};
  for (const std::string& reply : noErrors) {
    server.Answer(reply);
    EXPECT_EQ(Call(ViewShareUsers), R"(true {"error_model":0,"error_code":0,"error_info":"","lst_user_data":[]})")
        << reply;
  }
  const struct {
    std::string reply, module, code, text;
  } refusals[] = {
      {Refused(100, 4), "100", "4", "Not permitted"},
      {Refused(100, 6), "100", "6", "The server did not understand the request"},
      {"{}", "-1", "-1", "Error -1--1"},
      {"", "-1", "-1", "Error -1--1"},
      {R"({"ResponseStatus":{"ErrorModule":5}})", "5", "-1", "Error 5--1"},
  };
  for (const auto& [reply, module, code, text] : refusals) {
    server.Answer(reply);
    EXPECT_EQ(Call(ViewShareUsers), R"(false {"error_model":)" + module + R"(,"error_code":)" + code +
                                        R"(,"error_info":")" + text + R"(","lst_user_data":[]})");
    EXPECT_EQ(log->Take().back(),
              InfoLine("[ViewShareUsers]Receive View Share Response First_code: " + module + ", Second_code: " + code));
  }
}

TEST_F(UserCallsTest, SharingThatReachesNoServerTellsTheTransportsError) {
  server.BreakDown(ErrorCode(1, 28, 5, "slow"));
  EXPECT_EQ(Call(ViewShareUsers, R"({"view_id":"5"})"),
            R"(false {"error_model":1,"error_code":28,"error_info":"The server did not answer in time: slow",)"
            R"("lst_user_data":[]})");
  EXPECT_EQ(log->Take().back(), InfoLine("[ViewShareUsers]View Share ORL Failed First_code: 1, Second_code: 28"));
}

TEST_F(UserCallsTest, UsersWhoCouldNotBeGivenTheViewAreListedInTheServersOrder) {
  const struct {
    std::string errors, text, users, logged;
  } cases[] = {
      {R"([{"UserID":9,"UserName":"zoe","ErrorModule":100,"ErrorCode":5},)"
       R"({"UserID":2,"UserName":"adam","ErrorModule":100,"ErrorCode":4}])",
       R"(zoe: The user does not exist\nadam: Not permitted\n)",
       R"({"user_id":9,"user_name":"zoe","error_model":100,"error_code":5},)"
       R"({"user_id":2,"user_name":"adam","error_model":100,"error_code":4})",
       "UserID: 9,UserNamezoe,ErrorModule100,ErrorCode5;UserID: 2,UserNameadam,ErrorModule100,ErrorCode4;"},
      // An entry without a name, and a lone entry in place of a list.
      {R"({"UserID":9})", R"(: Error -1--1\n)", R"({"user_id":9,"user_name":"","error_model":-1,"error_code":-1})",
       "UserID: 9,UserName,ErrorModule-1,ErrorCode-1;"},
      // Code 0 has no text, yet the user counts as left out.
      {R"([{"UserName":"x","ErrorModule":0,"ErrorCode":0}])", R"(x: \n)",
       R"({"user_id":-1,"user_name":"x","error_model":0,"error_code":0})",
       "UserID: -1,UserNamex,ErrorModule0,ErrorCode0;"},
  };
  for (const auto& c : cases) {
    server.Answer(Accepted(R"({"ErrorList":{"Error":)" + c.errors + "}}"));
    log->Take();
    EXPECT_EQ(Call(ViewShareUsers), R"(false {"error_model":0,"error_code":0,"error_info":")" + c.text +
                                        R"(","lst_user_data":[)" + c.users + "]}");
    EXPECT_EQ(log->Take().back(), InfoLine("[ViewShareUsers]Partial User Share Failed: " + c.logged));
  }
}

}  // namespace
}  // namespace call_test
