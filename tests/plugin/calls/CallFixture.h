// SPDX-License-Identifier: Apache-2.0
// What the tests of the exported functions add to the fixture of the core: a current user, and reading what was sent.
#pragma once

#include <string>

#include "../core/CoreFixture.h"

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
std::string At(const std::string& json, const std::string& path);

class CallTest : public core_test::CoreTest {
 protected:
  static constexpr int kUserId = 7;

  CallTest();
  ~CallTest() override;

  // The only request sent since the last look; a failed expectation where there was none or another.
  SentRequest Sent();
  // Puts objects of that type into the cache.
  void CacheGroup(unsigned int id, const std::string& name, int type, unsigned int parentId);
  void CacheView(unsigned int id, const std::string& name, int type, unsigned int groupId, bool isShared = false);
  using CoreTest::CacheGroup;
  using CoreTest::CacheView;
};

}  // namespace call_test
