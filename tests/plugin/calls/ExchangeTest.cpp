// SPDX-License-Identifier: Apache-2.0
// What all exchanges share.
#include <new>
#include <stdexcept>

#include "CallFixture.h"
#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace call_test {
namespace {

namespace protocol = QorviViewPlugin_view_plugin_protocol;

class ExchangeTest : public CallTest {};

TEST_F(ExchangeTest, UnreadableRequestsGoOnWithTheDefaults) {
  server.Answer(Accepted());
  for (const auto& [name, exchange] : kExchanges) {
    if (exchange == GetAllUserInfo) continue;  // it waits for a download
    const std::string expected = Call(exchange, "{}");
    EXPECT_NE(expected.find('{'), std::string::npos);
    for (const char* request : {"", "null", "{", "[]", "5", "\xFF", R"({"ID":)"}) {
      EXPECT_EQ(Call(exchange, request), expected) << name << " " << request;
    }
  }
}

TEST_F(ExchangeTest, OneStringMayBeRequestAndResponse) {
  std::string text = R"({"ParentID":"root"})";
  EXPECT_TRUE(GetPlanGroups(text, text));
  EXPECT_EQ(At(text, "/Total"), "3");
}

TEST_F(ExchangeTest, AFailedEditIsToldInTheErrorTextAndLeavesTheCache) {
  CacheGroup(Group(5, kNoId, "five", 1));
  CacheView(View(3, 5, "three", 1));
  const std::string before = Cached();
  // A call, and what ends its answer.
  for (const auto& [call, rest] : testing_support::Cases(CALL_TEXTS)) {
    server.Answer(Refused(100, 3));
    EXPECT_EQ(Asked(call), R"(false {"ErrorInfo":"The name is not valid)" + rest.at(0)) << call;
    server.BreakDown(ErrorCode(1, 28, 0, "by a proxy"));
    EXPECT_EQ(Asked(call), R"(false {"ErrorInfo":"The server did not answer in time: by a proxy)" + rest[0]) << call;
    // A failure without an error text counts as success.
    server.BreakDown(ErrorCode(1, 0, 0, ""));
    EXPECT_EQ(Asked(call), R"(true {"ErrorInfo":")" + rest[0]) << call;
    EXPECT_EQ(Cached(), before);
  }
}

TEST_F(ExchangeTest, WhateverATransportThrowsEndsInAFailedAnswer) {
  const std::function<void()> throws[] = {[] { throw std::bad_alloc(); }, [] { throw std::runtime_error("x"); },
                                          [] { throw 5; }};
  for (const auto& thrower : throws) {
    server.onRequest = thrower;
    ExpectAnswers();
  }
}

bool AnswerBadly(const protocol::GetCurrentUserRequest&, protocol::GetCurrentUserResponse& response) {
  response.user_name = "half";
  throw std::bad_alloc();
}

bool AnswerItsOwnWay(const protocol::UserRequestInfo& request, protocol::UserResponseInfo& response) {
  response.error_info = request.request_info;
  return !response.error_info.empty();
}

TEST_F(ExchangeTest, TheResultIsTheErrorTextsOrTheMiddlesOwn) {
  server.Answer(Refused(100, 1));
  EXPECT_EQ(Call(SetClientViewConfig), R"(false {"error_info":"The view does not exist"})");
  server.BreakDown(ErrorCode(1, 0, 0, ""));
  EXPECT_EQ(Call(SetClientViewConfig), R"(true {"error_info":""})");
  std::string response;
  const std::string request = R"({"request_info":"text"})";
  EXPECT_TRUE(QorviViewPlugin::RunExchange(request, response, AnswerItsOwnWay));
  EXPECT_FALSE(QorviViewPlugin::RunExchange("", response, AnswerItsOwnWay));
  EXPECT_FALSE(QorviViewPlugin::RunExchange("", response, AnswerBadly));
  EXPECT_EQ(response, R"({"user_id":0,"user_name":""})") << "a fresh record, also where there is no error text";
}

}  // namespace
}  // namespace call_test
