// SPDX-License-Identifier: Apache-2.0
// The users and their default views, and the calls that start and stop.
#include "CallFixture.h"

namespace call_test {
namespace {

using ResourceStore::CUserInfo;

class UserCallsTest : public CallTest {
 protected:
  UserCallsTest() { log->Take(); }

  // What sharing answers to a reply, and the last line that it logs.
  std::string Shared(const std::string& reply) {
    server.Answer(reply);
    const std::string answer = Call(ViewShareUsers);
    return answer + "\n" + log->Take().back();
  }
  static std::string ShareAnswer(const std::string& module, const std::string& code, const std::string& text,
                                 const std::string& users = "") {
    return R"( {"error_model":)" + module + R"(,"error_code":)" + code + R"(,"error_info":")" + text +
           R"(","lst_user_data":[)" + users + "]}";
  }
};

const std::string kWhole = R"(true {"error_model":0,"error_code":0,"error_info":"","lst_user_data":[]})";

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
  EXPECT_EQ(Call(ViewShareUsers, R"({"share_users":"1,2,\"x\"","view_id":"abc"})"), kWhole);
  const std::string body = R"({"ViewShare":{"ShareUsers":"1,2,\"x\""}})";
  EXPECT_EQ(Sent(), "POST /NXAPI/Vantorel/Platform/V1/View/abc/Share " + body);
  EXPECT_EQ(log->Take(), (Texts{InfoLine("[ViewShareUsers]ViewShare User Ids Request: " + body),
                                InfoLine("[ViewShareUsers]Share View Recvive Data: " + Accepted())}));
}

TEST_F(UserCallsTest, SharingIsWholeOnlyWhereTheServerSaysSoAndNamesNobody) {
  for (const char* data : {R"({"ErrorList":{}})", R"({"ErrorList":{"Error":[]}})", R"({"ErrorList":{"Error":null}})"}) {
    server.Answer(Accepted(data));
    EXPECT_EQ(Call(ViewShareUsers), kWhole) << data;
  }
  const struct {
    std::string reply, module, code, text;
  } refusals[] = {{Refused(100, 6), "100", "6", "The server did not understand the request"},
                  {"", "-1", "-1", "Error -1--1"},
                  {R"({"ResponseStatus":{"ErrorModule":5}})", "5", "-1", "Error 5--1"}};
  for (const auto& [reply, module, code, text] : refusals) {
    EXPECT_EQ(Shared(reply), "false" + ShareAnswer(module, code, text) + "\n" +
                                 InfoLine("[ViewShareUsers]Receive View Share Response First_code: " + module +
                                          ", Second_code: " + code));
  }
  server.BreakDown(ErrorCode(1, 3, 5, "bad"));
  EXPECT_EQ(Call(ViewShareUsers), "false" + ShareAnswer("1", "3", "The address of the request is not valid: bad"));
  EXPECT_EQ(log->Take().back(), InfoLine("[ViewShareUsers]View Share ORL Failed First_code: 1, Second_code: 3"));
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
      // A lone entry in place of a list; code 0 has no text, yet the user counts as left out.
      {R"({"ErrorModule":0,"ErrorCode":0})", R"(: \n)",
       R"({"user_id":-1,"user_name":"","error_model":0,"error_code":0})",
       "UserID: -1,UserName,ErrorModule0,ErrorCode0;"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Shared(Accepted(R"({"ErrorList":{"Error":)" + c.errors + "}}")),
              "false" + ShareAnswer("0", "0", c.text, c.users) + "\n" +
                  InfoLine("[ViewShareUsers]Partial User Share Failed: " + c.logged));
  }
}

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
}

TEST_F(ViewConfigCallsTest, StoppingReleasesNothing) {
  CacheView(View(5, kNoId, "five"));
  EXPECT_TRUE(UnInitEnvir() && InitEnvir() && InitEnvir() && UnInitEnvir() && UnInitEnvir());
  EXPECT_EQ(ViewName(5), "five");
  EXPECT_TRUE(IsSupportPlanChangeOrder());
}

}  // namespace
}  // namespace call_test
