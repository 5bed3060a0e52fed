// SPDX-License-Identifier: Apache-2.0
// What becomes of the platform's own threads when memory runs out at any single moment of them, before a real server.
#include "../FailingMemory.h"
#include "../server/TestClient.h"
#include "DownloadFixture.h"

namespace {

using namespace failing_memory;
using namespace testing_support;
using ResourceStore::COrlUserManager;
using Vant::Base::Error::ErrorCode;

class PlatformMemoryTest : public server::test::ServerTest {
 protected:
  PlatformMemoryTest() {
    m_users.m_during = [this] { m_failedAllocations = Stop(); };
    ResourceStore::details::SetStreamTimings({1ms, 5ms, 30s, 20s});
    CNetCommManager::Instance().SetServer(m_server->Url());
    ErrorCode error;
    EXPECT_TRUE(CUserCommonManager::Instance().Login("ann", "a", "test", error));
  }
  ~PlatformMemoryTest() override { EndDownloads(); }

  // Has `fail` work with a failure at each moment, from 0 on, until none happens any more, which it answers. So there
  // are more moments than `least`.
  static void AtEachMoment(long least, const std::function<bool(long, Want)>& fail) {
    for (const Want want : {Want::OneAllocation, Want::TwentyFromThere}) {
      long moment = 0;
      while (fail(moment, want) && !HasFailure()) ++moment;
      EXPECT_GT(moment, least);
    }
  }
  // Downloads the users on `thread`; false where no allocation failed.
  bool DownloadUsers(long moment, Want want, const Threads& thread) {
    const size_t before = m_users.Count();
    FailAt(moment, want, thread);
    COrlUserManager::Instance().StartDownLoadOrlUser();
    EXPECT_TRUE(Eventually([&] { return m_users.Count() > before; })) << moment;
    return m_failedAllocations != 0;
  }

  std::atomic<long> m_failedAllocations{0};
  UserListener m_users;
};

TEST_F(PlatformMemoryTest, TheUsersAreAllThereOrTheDownloadFails) {
  Threads thread = NewThreads();
  DownloadUsers(1 << 30, Want::OneAllocation, thread);  // starts the thread, and binds what is bound late
  thread = ThreadsSince(thread);
  std::map<Want, int> failures;
  AtEachMoment(50, [&](long moment, Want want) {
    const bool failed = DownloadUsers(moment, want, thread);
    const std::string end = m_users.Ends().back();
    const bool isComplete = end == "state 0 0/0";
    EXPECT_TRUE(isComplete || (end.starts_with("state 1 ") && !end.starts_with("state 1 0/"))) << end;
    failures[want] += !isComplete;
    std::vector<std::shared_ptr<ResourceStore::CUserInfo>> users;
    COrlUserManager::Instance().GetOrlUsers(users);
    EXPECT_TRUE(users.size() == 3 && users[2]->GetVal_m_strUsername() == "cid") << moment;
    EXPECT_TRUE(failed || isComplete);
    return failed;
  });
  for (const auto& [want, count] : failures) EXPECT_GT(count, 30);
}

TEST_F(PlatformMemoryTest, TheListsComeWholeInTheEnd) {
  for (int i = 0; i < 3; ++i) ann.AddView("a view whose name is long, number " + std::to_string(i), -1, kPublic);
  ASSERT_TRUE(DownloadViews());
  const std::string whole = TextOfViews();
  AtEachMoment(50, [&](long moment, Want want) {
    Manager().Stop();
    FailAt(moment, want, NewThreads());
    EXPECT_TRUE(DownloadViews());
    const long failed = Stop();
    EXPECT_EQ(TextOfViews(), whole) << moment;
    return failed != 0;
  });
}

TEST_F(PlatformMemoryTest, EveryChangeIsToldAndMerged) {
  std::mutex mutex;
  std::set<std::string> told;
  Manager().SetViewsUpdateCallback([&](const std::string& document) {
    const Spared spared;
    const size_t begin = document.find("change ");
    std::lock_guard<std::mutex> lock(mutex);
    told.insert(document.substr(begin, document.find('"', begin) - begin));
  });
  const auto isTold = [&](const std::string& name) {
    std::lock_guard<std::mutex> lock(mutex);
    return told.count(name) != 0;
  };
  const int32_t view = ann.AddView("one", -1, kPublic);
  Threads thread = NewThreads();
  ASSERT_TRUE(DownloadViews());
  thread = ThreadsSince(thread);
  AtEachMoment(10, [&](long moment, Want want) {
    // Two, of which the second may come in the same piece.
    std::vector<std::string> names;
    FailAt(moment, want, thread);
    for (const char* which : {" a", " b"}) {
      names.push_back("change " + std::to_string(static_cast<int>(want)) + "-" + std::to_string(moment) + which);
      ann.Put("V0/Views/" + std::to_string(view), server::test::ViewBody(names.back(), -1, kPublic));
    }
    for (const std::string& name : names) EXPECT_TRUE(Eventually([&] { return isTold(name); })) << name;
    const long failed = Stop();
    EXPECT_NE(TextOfViews().find(names.back()), std::string::npos);
    return failed != 0;
  });
}

}  // namespace
