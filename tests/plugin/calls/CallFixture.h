// SPDX-License-Identifier: Apache-2.0
// What the tests of the exported functions add to the fixture of the core: a current user, calls that stand in a file,
// and reading what was sent.
#pragma once

#include <map>

#include "../../Cases.h"
#include "../core/CoreFixture.h"
#include "BizShared/UserCommonManager.h"
#include "NetLink/RapidJsonProto.h"

namespace call_test {

using namespace core_test;
using QorviViewPlugin::kNoId;

// All but those that poll for the first load.
inline const std::map<std::string, Exchange> kExchanges = {{"GetPlanGroups", GetPlanGroups},
                                                           {"AddPlanGroup", AddPlanGroup},
                                                           {"UpdatePlanGroup", UpdatePlanGroup},
                                                           {"DeletePlanGroup", DeletePlanGroup},
                                                           {"GetPlansInGroup", GetPlansInGroup},
                                                           {"GetPlanDetail", GetPlanDetail},
                                                           {"GetPlanConfig", GetPlanConfig},
                                                           {"AddPlan", AddPlan},
                                                           {"UpdatePlan", UpdatePlan},
                                                           {"DeletePlan", DeletePlan},
                                                           {"GetCurrentUser", GetCurrentUser},
                                                           {"GetAllUserInfo", GetAllUserInfo},
                                                           {"ViewShareUsers", ViewShareUsers},
                                                           {"GetClientViewConfig", GetClientViewConfig},
                                                           {"SetClientViewConfig", SetClientViewConfig}};

// What a call, "<function> <request>", answers.
inline std::string Asked(const std::string& call) {
  const size_t blank = call.find(' ');
  return Call(kExchanges.at(call.substr(0, blank)), call.substr(blank + 1));
}

// The value at a path of the JSON text that begins with the first brace, as text; "(none)" where there is none.
inline std::string At(const std::string& text, const std::string& path) {
  NetLink::CRapidJsonProto document;
  EXPECT_TRUE(document.set_str(text.substr(std::min(text.find('{'), text.size())))) << text;
  return document.get_v(path, "(none)");
}

class CallTest : public CoreTest {
 protected:
  // The current user is number 7.
  CallTest() { BizShared::CUserCommonManager::Instance().SetUser(7, "operator"); }
  ~CallTest() override { BizShared::CUserCommonManager::Instance().Logout(); }

  // The only request sent since the last look; a failed expectation where there was none or another.
  std::string Sent() {
    const Texts requests = server.Take();
    EXPECT_EQ(requests.size(), 1u);
    return requests.empty() ? "" : requests.front();
  }
  // Makes the running test's calls.
  void ExpectAnswers() {
    for (const auto& [call, expected] : testing_support::Cases(CALL_TEXTS)) {
      EXPECT_EQ(Asked(call), expected.at(0)) << call;
      if (expected.size() > 1) {
        EXPECT_EQ(Sent(), expected[1]) << call;
      }
    }
  }
};

}  // namespace call_test
