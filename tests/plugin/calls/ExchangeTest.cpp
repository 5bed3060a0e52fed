// SPDX-License-Identifier: Apache-2.0
// What all exchanges share.
#include <new>
#include <stdexcept>

#include "CallFixture.h"
#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace call_test {
namespace {

namespace protocol = QorviViewPlugin_view_plugin_protocol;

class ExchangeTest : public CallTest {};

// The exchanges that ask the server nothing or through the transport; the others wait for downloads.
constexpr Exchange kExchanges[] = {GetPlanGroups,       AddPlanGroup,       UpdatePlanGroup, DeletePlanGroup,
                                   GetPlansInGroup,     GetPlanDetail,      GetPlanConfig,   AddPlan,
                                   UpdatePlan,          DeletePlan,         GetCurrentUser,  ViewShareUsers,
                                   GetClientViewConfig, SetClientViewConfig};

TEST_F(ExchangeTest, UnreadableRequestsGoOnWithTheDefaults) {
  server.Answer(Accepted());
  for (const Exchange exchange : kExchanges) {
    const std::string expected = Call(exchange, "{}");
    EXPECT_NE(expected.find('{'), std::string::npos);
    for (const char* request : {"", "null", "{", "[]", "5", "\xFF", R"({"ID":)"}) {
      EXPECT_EQ(Call(exchange, request), expected) << request;
    }
  }
}

TEST_F(ExchangeTest, OneStringMayBeRequestAndResponse) {
  std::string text = R"({"ParentID":"root"})";
  EXPECT_TRUE(GetPlanGroups(text, text));
  EXPECT_EQ(At(text, "/Total"), "3");
}

TEST_F(ExchangeTest, WhateverATransportThrowsEndsInAFailedAnswer) {
  const struct {
    Exchange exchange;
    std::string expected;
  } calls[] = {
      {AddPlanGroup, R"(false {"ErrorInfo":"Internal error in the client library","ID":""})"},
      {UpdatePlanGroup, R"(false {"ErrorInfo":"Internal error in the client library"})"},
      {AddPlan, R"(false {"ErrorInfo":"Internal error in the client library","ID":""})"},
      {UpdatePlan, R"(false {"ErrorInfo":"Internal error in the client library"})"},
      {DeletePlan, R"(false {"ErrorInfo":"Internal error in the client library"})"},
      {SetClientViewConfig, R"(false {"error_info":"Internal error in the client library"})"},
      {ViewShareUsers, R"(false {"error_model":0,"error_code":0,)"
                       R"("error_info":"Internal error in the client library","lst_user_data":[]})"},
  };
  const std::function<void()> throws[] = {[] { throw std::bad_alloc(); }, [] { throw std::runtime_error("x"); },
                                          [] { throw 5; }};
  for (const auto& thrower : throws) {
    server.onRequest = thrower;
    for (const auto& c : calls) EXPECT_EQ(Call(c.exchange), c.expected);
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

void AnswerByTheText(const protocol::UserRequestInfo& request, protocol::UserResponseInfo& response) {
  response.error_info = request.request_info;
}

TEST_F(ExchangeTest, TheResultIsTheErrorTextsOrTheMiddlesOwn) {
  std::string response;
  const std::string request = R"({"request_info":"text"})";
  EXPECT_FALSE(QorviViewPlugin::RunExchange(request, response, AnswerByTheText));
  EXPECT_EQ(response, R"({"error_info":"text","user_detail_list":[]})");
  EXPECT_TRUE(QorviViewPlugin::RunExchange("", response, AnswerByTheText));
  EXPECT_EQ(response, R"({"error_info":"","user_detail_list":[]})");
  EXPECT_TRUE(QorviViewPlugin::RunExchange(request, response, AnswerItsOwnWay));
  EXPECT_FALSE(QorviViewPlugin::RunExchange("", response, AnswerItsOwnWay));
}

TEST_F(ExchangeTest, AFailedAnswerIsAFreshRecordAlsoWhereThereIsNoErrorText) {
  std::string response = "old";
  EXPECT_FALSE(QorviViewPlugin::RunExchange("", response, AnswerBadly));
  EXPECT_EQ(response, R"({"user_id":0,"user_name":""})");
}

}  // namespace
}  // namespace call_test
