// SPDX-License-Identifier: Apache-2.0
#include "host/calls/RequestCheck.h"

#include <gtest/gtest.h>

#include "../Cases.h"

namespace host {
namespace {

// Those that docs/viewctl.md shows are held by ViewctlDocTest.
TEST(RequestCheckTest, EachFaultIsToldWithItsPlace) {
  for (const auto& [call, expected] : testing_support::Cases(TABLES "Faults.txt")) {
    const size_t blank = call.find(' ');
    std::string faults;
    for (const std::string& fault : FaultsOf(call.substr(0, blank), call.substr(blank + 1))) faults += fault + "\n";
    std::string lines;
    for (const std::string& line : expected) lines += line + "\n";
    EXPECT_EQ(faults, lines) << call;
  }
  EXPECT_TRUE(FaultsOf("GetPlanConfig", "").empty());
  EXPECT_EQ(FaultsOf("AddPlan", "{\n \"Name\": \"a\",\n \"Type\" 0}"),
            std::vector<std::string>{"the request is no JSON at line 3, column 9"});
}

TEST(RequestCheckTest, EveryExchangeIsKnown) {
  for (const std::string& exchange : ExchangeNames()) {
    EXPECT_FALSE(FaultsOf(exchange, R"({"no such key":1})").empty()) << exchange;
    const bool changes = exchange.starts_with("Add") || exchange.starts_with("Update") ||
                         exchange.starts_with("Delete") || exchange.starts_with("Set") ||
                         exchange.starts_with("ViewShare");
    EXPECT_EQ(IsEdit(exchange), changes) << exchange;
  }
  const std::vector<std::string> documented = {
      "IsInitViewGroupFinish", "IsInitViewFinish", "GetPlanGroups",   "AddPlanGroup",
      "UpdatePlanGroup",       "DeletePlanGroup",  "GetPlansInGroup", "GetPlanDetail",
      "GetPlanConfig",         "AddPlan",          "UpdatePlan",      "DeletePlan",
      "GetCurrentUser",        "GetAllUserInfo",   "ViewShareUsers",  "GetClientViewConfig",
      "SetClientViewConfig"};
  EXPECT_EQ(ExchangeNames(), documented) << "those of docs/exchanges.md";
}

}  // namespace
}  // namespace host
