// SPDX-License-Identifier: Apache-2.0
// What one listener reads of the changes, a piece at a time, without a server.
#include "server/changes/ChangeFeed.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "TestClient.h"

namespace server::test {
namespace {

struct BrokenStore : ChangeSource {
  Reach ReadChanges(const FeedPtr&, int64_t, ChangePiece&) override { throw std::runtime_error("disk full"); }
  int64_t LastChange() override { throw std::runtime_error("disk full"); }
  void Unsubscribe(ChangeFeed*) override {}
  bool TouchSession(int64_t) override { throw std::runtime_error("disk full"); }
};

// Says that there is more `pieces` times, and never has anything to see.
struct DullStore : ChangeSource {
  Reach ReadChanges(const FeedPtr& feed, int64_t after, ChangePiece& piece) override {
    piece.upTo = after + 1;
    ++reads;
    if (--pieces > 0) return Reach::kMore;
    feed->Subscribed();
    return Reach::kLive;
  }
  int64_t LastChange() override { return last; }
  void Unsubscribe(ChangeFeed*) override {}
  bool TouchSession(int64_t) override { return true; }
  int pieces = 3, reads = 0;
  int64_t last = 3;
};

TEST(ChangeFeed, ReadsAPieceAtATimeAndTellsNowAndThenHowFarItHasCome) {
  DullStore store;
  const auto feed = std::make_shared<ChangeFeed>(store, Caller{}, 0);
  const auto taken = [&] {
    std::vector<Text> events;
    EXPECT_TRUE(feed->Take(events));
    return events.empty() ? std::string() : *events.back();
  };
  for (int piece = 1; piece <= 3; ++piece) {
    EXPECT_EQ(taken(), piece < 3 ? "" : "id: 3\n\n");
    EXPECT_EQ(feed->HasMore(), piece < 3) << "others may run first";
    EXPECT_EQ(store.reads, piece);
  }
  EXPECT_EQ(taken(), "");
  store.last = 9;
  EXPECT_EQ(taken(), "") << "not with each change";
  feed->KeepAlive();
  feed->Offer(9, std::make_shared<std::string>("event"));
  EXPECT_EQ(taken(), "event");
  EXPECT_EQ(taken(), "") << "the event has told it";
  store.last = 12;
  feed->KeepAlive();
  EXPECT_EQ(taken(), "id: 12\n\n");
  feed->KeepAlive();
  EXPECT_EQ(taken(), "") << "once";
}

TEST(ChangeFeed, SoMuchWaitsForAListenerAndBeyondThatItReadsByItself) {
  constexpr size_t kMiB = 1 << 20;
  const struct {
    int64_t events;
    size_t size;  // of each
    size_t atOnce, kept;
  } cases[] = {{1000, 10, 1000, 1000}, {1001, 10, 1000, 1000}, {3, kMiB / 2, 2, 3},
               {4, kMiB, 1, 4},        {5, kMiB, 1, 4},        {1, 5 * kMiB, 1, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.events) + " of " + std::to_string(c.size));
    DullStore store;
    store.pieces = 1;
    const auto feed = std::make_shared<ChangeFeed>(store, Caller{}, 0);
    std::vector<Text> events;
    feed->Take(events);  // by now it is subscribed
    for (int64_t i = 1; i <= c.events; ++i) feed->Offer(3 + i, std::make_shared<std::string>(c.size, 'x'));
    std::vector<size_t> taken;
    do {
      events.clear();
      feed->Take(events);
      taken.push_back(events.size());
    } while (taken.back() > 0);
    EXPECT_EQ(taken.front(), c.atOnce);
    EXPECT_EQ(std::accumulate(taken.begin(), taken.end(), size_t{0}), c.kept);
    EXPECT_EQ(store.reads, c.kept < static_cast<size_t>(c.events) ? 2 : 1);
  }
}

TEST(ChangeFeed, EndsWhereTheStoreFails) {
  BrokenStore store;
  const auto feed = std::make_shared<ChangeFeed>(store, Caller{}, 0);
  std::vector<Text> events;
  EXPECT_FALSE(feed->Take(events));
  EXPECT_FALSE(feed->KeepAlive());
}

}  // namespace
}  // namespace server::test
