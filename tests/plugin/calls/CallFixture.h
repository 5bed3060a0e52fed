// SPDX-License-Identifier: Apache-2.0
// What the tests of the exported functions add to the fixture of the core: a current user, and reading what was sent.
#pragma once

#include "../core/CoreFixture.h"
#include "BizShared/UserCommonManager.h"
#include "NetLink/RapidJsonProto.h"

namespace call_test {

using namespace core_test;
using QorviViewPlugin::kNoId;

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
};

}  // namespace call_test
