// SPDX-License-Identifier: Apache-2.0
#include "CallFixture.h"

#include "BizShared/UserCommonManager.h"
#include "NetLink/RapidJsonProto.h"

namespace call_test {

namespace {

BizShared::CUserCommonManager& Users() {
  return Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance();
}

}  // namespace

std::string At(const std::string& json, const std::string& path) {
  NetLink::CRapidJsonProto document;
  EXPECT_TRUE(document.set_str(json)) << json;
  return document.get_v(path, "(none)");
}

CallTest::CallTest() {
  Users().SetUser(kUserId, "operator");
}

CallTest::~CallTest() {
  Users().Logout();
}

SentRequest CallTest::Sent() {
  const auto requests = server.Take();
  EXPECT_EQ(requests.size(), 1u);
  return requests.empty() ? SentRequest() : requests.front();
}

void CallTest::CacheGroup(unsigned int id, const std::string& name, int type, unsigned int parentId) {
  auto group = Group(id, parentId, name);
  group.enumViewType = type;
  CoreTest::CacheGroup(group);
}

void CallTest::CacheView(unsigned int id, const std::string& name, int type, unsigned int groupId, bool isShared) {
  auto view = View(id, groupId, name);
  view.enumViewType = type;
  view.bShared = isShared;
  CoreTest::CacheView(view);
}

}  // namespace call_test
