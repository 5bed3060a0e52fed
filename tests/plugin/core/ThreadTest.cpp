// SPDX-License-Identifier: Apache-2.0
// The core from several threads at once; run under ThreadSanitizer too.
#include <thread>

#include "../../Gate.h"
#include "CoreFixture.h"
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"
#include "QorviViewPlugin/base/Locks.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;
using namespace std::chrono_literals;
using testing_support::Gate;

class ThreadTest : public CoreTest {
 protected:
  ThreadTest() { CacheGroup(Group(1)); }
  static std::string LoadViews() { return Call(IsInitViewFinish); }
  static void Change(const std::string& views) { Downloads().NotifyViewsUpdate(ViewsDocument(views)); }
  // Starts a first load of these views, which stops while it fills until the gate is opened.
  std::future<std::string> StartHeldLoad(const std::string& views) {
    Downloads().SetDownloadedData("", ViewsDocument(views), true);
    log->onFill = [this] { filling.Pass(); };
    auto load = std::async(std::launch::async, LoadViews);
    EXPECT_TRUE(filling.WaitUntilReached());
    return load;
  }

  Gate filling;
};

constexpr char kLoadedAnswer[] = R"(true {"error_info":"","init_finish":true})";

TEST_F(ThreadTest, ASecondThreadThatStartsAFirstLoadWaitsForTheFirst) {
  auto first = StartHeldLoad(R"({"ID":5,"Name":"five"})");
  auto second = std::async(std::launch::async, [] {
    const std::string answer = LoadViews();
    return answer + ViewName(5);
  });
  EXPECT_EQ(second.wait_for(100ms), std::future_status::timeout);
  filling.Open();
  EXPECT_EQ(first.get(), kLoadedAnswer);
  EXPECT_EQ(second.get(), "true oldfive");
}

TEST_F(ThreadTest, ChangesThatArriveDuringAFillAreAppliedAfterItInOrder) {
  NotingObserver observer;
  Texts namesSeen;
  observer.onNotice = [&](const auto&) { namesSeen.push_back(ViewName(9)); };
  Observe(observer, kViewGroup, "1");
  Observe(observer, kView, "9");
  auto load = StartHeldLoad(R"({"ID":5,"Name":"five","ViewGroupID":1},{"ID":6,"ViewGroupID":1})");
  std::thread platform([] {
    Change(R"({"ID":9,"Name":"new","ViewGroupID":1})");
    Downloads().NotifyViewsUpdate("rubbish");
    Change(R"({"ID":9,"Name":"newer","ViewGroupID":1,"Method":1},{"ID":6,"Method":2})");
    Change(R"({"ID":9,"Method":2})");
  });
  platform.join();  // nobody waits for the fill but those who load
  EXPECT_EQ(observer.Take(), Texts());
  EXPECT_EQ(ViewName(5) + ViewName(9), "(none)(none)");
  filling.Open();
  EXPECT_EQ(load.get(), kLoadedAnswer);
  EXPECT_EQ(ViewName(5) + ViewName(6) + ViewName(9), "five(none)(none)");
  EXPECT_EQ(namesSeen, (Texts{"new", "newer", "newer", "(none)"}));
}

TEST_F(ThreadTest, ChangesThatArriveWhileQueuedOnesAreAppliedComeAfterThem) {
  Gate applying;
  NotingObserver observer;
  observer.onNotice = [&](const auto& param) {
    if (param.child_id == "1") applying.Pass();
  };
  Observe(observer, kViewGroup, "1");
  const auto add = [](const std::string& id) { Change(R"({"ID":)" + id + R"(,"ViewGroupID":1})"); };
  auto load = StartHeldLoad("");
  add("1");
  add("2");
  filling.Open();
  ASSERT_TRUE(applying.WaitUntilReached());
  add("3");
  EXPECT_EQ(observer.Take().size(), 1u);
  applying.Open();
  EXPECT_EQ(load.get(), kLoadedAnswer);
  add("4");
  EXPECT_EQ(Members(1), "1'' 2'' 3'' 4'' ");
}

// Or readers without end would keep changes from the cache.
TEST(SharedMutexTest, WhoWaitsToWriteGoesBeforeWhoComesToReadAfterwards) {
  SharedMutex mutex;
  bool isWritten = false;
  std::future<void> writer;
  std::future<bool> reader;
  {
    const ReadLock earlier(mutex);
    writer = std::async(std::launch::async, [&] {
      const WriteLock lock(mutex);
      isWritten = true;
    });
    EXPECT_EQ(writer.wait_for(500ms), std::future_status::timeout);
    reader = std::async(std::launch::async, [&] {
      const ReadLock lock(mutex);
      return isWritten;
    });
    EXPECT_EQ(reader.wait_for(100ms), std::future_status::timeout);
  }
  EXPECT_TRUE(reader.get());
  writer.get();
}

TEST_F(ThreadTest, AFloodOfChangesDoesNotKeepALoadFromEnding) {
  Gate applying;
  std::atomic<bool> isHeld{false}, stop{false};
  NotingObserver slow;
  slow.onNotice = [&](const auto&) {
    if (!isHeld.exchange(true)) applying.Pass();
    if (!stop) std::this_thread::sleep_for(2ms);
  };
  Observe(slow, kViewGroup, "1");
  auto load = StartHeldLoad("");
  const auto change = [] { Change(R"({"ID":1,"ViewGroupID":1})"); };
  for (int n = 0; n < 5; ++n) change();
  filling.Open();
  ASSERT_TRUE(applying.WaitUntilReached());
  std::vector<std::thread> flood;
  for (int thread = 0; thread < 4; ++thread) {
    flood.emplace_back([&] {
      for (int n = 0; n < 5000 && !stop; ++n) change();  // far more than ten seconds' work
    });
  }
  std::this_thread::sleep_for(50ms);  // let it rise
  applying.Open();
  EXPECT_EQ(load.wait_for(10s), std::future_status::ready);
  stop = true;
  for (std::thread& thread : flood) thread.join();
}

TEST_F(ThreadTest, TheNoticeOfARemovedGroupComesUnderTheGroupTablesLock) {
  CacheView(View(9, 1));
  NotingObserver observer;
  std::future<std::string> reader;
  observer.onNotice = [&](const auto&) {
    reader = std::async(std::launch::async, [] { return GroupName(1); });
    EXPECT_EQ(reader.wait_for(50ms), std::future_status::timeout);
    EXPECT_NE(FindViewByID(9), nullptr);  // the view table is free
  };
  Observe(observer, kViewGroup, "4294967295");
  Manager().RemoveViewGroupFromCache(1, false);
  ASSERT_TRUE(reader.valid());
  EXPECT_EQ(reader.get(), "(none)");
}

}  // namespace
}  // namespace core_test
