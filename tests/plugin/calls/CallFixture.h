// SPDX-License-Identifier: Apache-2.0
// What the tests of the exported functions add to the fixture of the core: a current user, and reading what was sent.
#pragma once

#include "../core/CoreFixture.h"
#include "BizShared/UserCommonManager.h"
#include "NetLink/RapidJsonProto.h"

namespace call_test {

using core_test::Accepted;
using core_test::Call;
using core_test::ErrorCode;
using core_test::Exchange;
using core_test::Group;
using core_test::GroupsDocument;
using core_test::InfoLine;
using core_test::NotingObserver;
using core_test::Refused;
using core_test::SentRequest;
using core_test::Texts;
using core_test::View;
using core_test::ViewsDocument;

// The value at a path of a JSON text, as text; "(none)" where there is none.
inline std::string At(const std::string& json, const std::string& path) {
  NetLink::CRapidJsonProto document;
  EXPECT_TRUE(document.set_str(json)) << json;
  return document.get_v(path, "(none)");
}

class CallTest : public core_test::CoreTest {
 protected:
  static constexpr int kUserId = 7;

  CallTest() { BizShared::CUserCommonManager::Instance().SetUser(kUserId, "operator"); }
  ~CallTest() override { BizShared::CUserCommonManager::Instance().Logout(); }

  // The only request sent since the last look; a failed expectation where there was none or another.
  SentRequest Sent() {
    const auto requests = server.Take();
    EXPECT_EQ(requests.size(), 1u);
    return requests.empty() ? SentRequest() : requests.front();
  }
  // Puts objects of that type into the cache.
  void CacheGroup(unsigned int id, const std::string& name, int type, unsigned int parentId) {
    auto group = Group(id, parentId, name);
    group.enumViewType = type;
    CoreTest::CacheGroup(group);
  }
  void CacheView(unsigned int id, const std::string& name, int type, unsigned int groupId, bool isShared = false) {
    auto view = View(id, groupId, name);
    view.enumViewType = type;
    view.bShared = isShared;
    CoreTest::CacheView(view);
  }
  using CoreTest::CacheGroup;
  using CoreTest::CacheView;
};

}  // namespace call_test
