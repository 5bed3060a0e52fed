// SPDX-License-Identifier: Apache-2.0
#include "host/calls/RequestCheck.h"

#include <gtest/gtest.h>

namespace host {
namespace {

std::string Faults(const char* exchange, const std::string& request) {
  std::string all;
  for (const std::string& fault : FaultsOf(exchange, request)) all += (all.empty() ? "" : "\n") + fault;
  return all;
}

TEST(RequestCheckTest, EachFaultIsToldWithItsPlace) {
  const auto windows = [](const std::string& list) { return R"({"PlanPages":[{},{"PlanItems":)" + list + "}]}"; };
  const std::tuple<const char*, std::string, const char*> rows[] = {
      {"AddPlan", "{", "the request is no JSON at line 1, column 2"},
      {"AddPlan", "{\n \"Name\": \"a\",\n \"Type\" 0}", "the request is no JSON at line 3, column 9"},
      {"AddPlan", R"({"Name":"a"} {})", "the request is no JSON at line 1, column 14"},
      {"AddPlan", "[]", "the request is no object"},
      {"AddPlan", R"({"Nmae":"a"})", "there is no key \"Nmae\"; did you mean \"Name\"?"},
      {"AddPlan", R"({"name":"a"})", "there is no key \"name\"; did you mean \"Name\"?"},
      {"AddPlan", R"({"Colour":"a"})", "there is no key \"Colour\""},
      {"AddPlan", R"({"Type":"1"})", "Type: it takes a whole number of 32 bits"},
      {"AddPlan", R"({"Type":1.0})", "Type: it takes a whole number of 32 bits"},
      {"AddPlan", R"({"GroupID":8})", "GroupID: it takes a text"},
      {"AddPlan", R"({"Name":"a","Name":"b"})", "\"Name\" is there twice, and only the first counts"},
      {"AddPlanGroup", R"({"is_share_viewgroup":0})", "is_share_viewgroup: it takes true or false"},
      {"AddPlan", windows("{}"), "PlanPages[2].PlanItems: it takes a list"},
      {"AddPlan", windows("[7]"), "PlanPages[2].PlanItems[1]: it takes an object"},
      {"AddPlan", windows(R"([{},{"Emap":[]}])"), "PlanPages[2].PlanItems[2].Emap: it takes an object"},
      {"AddPlan", windows(R"([{"CycleInfo":{"CycleResourceID":[{"ResuorceID":"1"}]}}])"),
       "PlanPages[2].PlanItems[1].CycleInfo.CycleResourceID[1]: there is no key \"ResuorceID\"; did you mean "
       "\"ResourceID\"?"},
      {"AddPlan", R"({"Nmae":"a","Type":true})",
       "there is no key \"Nmae\"; did you mean \"Name\"?\nType: it takes a whole number of 32 bits"},
      {"UpdatePlan", R"({"ID":"5"})",
       "\"PlanPages\" is missing, so the view would lose all its pages: give those that it is to keep, as "
       "GetPlanDetail "
       "answers them, or [] for none"},
      {"UpdatePlan", R"({"ID":"5","PlanPages":[]})", ""},
      {"GetPlanConfig", "", ""},
      {"AddPlan", windows(R"([{"ResourceID":"5","Emap":{"PosX":"1"}}])"), ""},
  };
  for (const auto& [exchange, request, expected] : rows) EXPECT_EQ(Faults(exchange, request), expected) << request;
}

TEST(RequestCheckTest, EveryExchangeIsKnown) {
  for (const std::string& exchange : ExchangeNames()) {
    EXPECT_NE(Faults(exchange.c_str(), R"({"no such key":1})"), "") << exchange;
    const bool changes = exchange.starts_with("Add") || exchange.starts_with("Update") ||
                         exchange.starts_with("Delete") || exchange.starts_with("Set") ||
                         exchange.starts_with("ViewShare");
    EXPECT_EQ(IsEdit(exchange), changes) << exchange;
  }
  EXPECT_EQ(ExchangeNames().size(), 17u) << "as many as docs/exchanges.md counts";
}

}  // namespace
}  // namespace host
