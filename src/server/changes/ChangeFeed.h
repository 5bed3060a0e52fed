// SPDX-License-Identifier: Apache-2.0
// Change streams. A feed first reads what it missed from the store, then hears each change as it is committed; one
// that falls behind goes back to reading, so that no queue grows without bound and nothing is lost. A listener that may
// see nothing of what happens is told how far it has come, so that it need not begin anew when it comes back.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "base/Mutex.h"
#include "server/changes/Change.h"
#include "server/changes/ChangeLog.h"
#include "server/changes/EventTexts.h"
#include "server/http/HttpHandler.h"

namespace server {

class ChangeFeed;
using FeedPtr = std::shared_ptr<ChangeFeed>;
// Feeds to wake once the site's lock is released. Null: the feed is being destroyed. A shared pointer made
// from a weak one under that lock must be kept here. If the last one died under the lock, the feed's destructor would
// take the lock again.
using WakeList = std::unordered_map<const ChangeFeed*, FeedPtr>;
void Wake(const WakeList& list);

// Where feeds read; the site. Any thread.
class ChangeSource {
 public:
  enum class Reach { kMore, kLive, kLost };
  virtual ~ChangeSource() = default;
  // What the feed's listener hears of after that number, a piece that is soon read. kLive: there is no more, and the
  // feed is subscribed to all that follows.
  virtual Reach ReadChanges(const FeedPtr& feed, int64_t after, ChangePiece& piece) = 0;
  // The last change that subscribed feeds have been offered.
  virtual int64_t LastChange() = 0;
  virtual void Unsubscribe(ChangeFeed* feed) = 0;
  virtual bool TouchSession(int64_t sessionId) = 0;
};

// Must be held by a shared_ptr; must not outlive its source.
class ChangeFeed : public EventSource, public std::enable_shared_from_this<ChangeFeed> {
 public:
  ChangeFeed(ChangeSource& source, const Caller& listener, int64_t after)
      : m_source(source), m_listener(listener), m_position(after), m_told(after) {}
  ~ChangeFeed() override { m_source.Unsubscribe(this); }

  const Caller& Listener() const { return m_listener; }

  // Where the store fails the stream ends, and the client comes back for the rest.
  bool Take(std::vector<Text>& events) override;
  bool HasMore() const override { return m_hasMore; }
  bool KeepAlive() override;
  void OnReady(std::function<void()> wake) override { m_wake = std::move(wake); }

  // Queues an event, unless the feed reads by itself: from the moment its queue is full until it is subscribed anew.
  void Offer(int64_t number, const Text& event);
  // Lets the feed read by itself, as a full queue does.
  void FallBehind() noexcept;
  // From now on it has read all that it is not offered.
  void Subscribed();
  void Close();
  void Wake() { m_wake(); }

 private:
  bool TakeNext(std::vector<Text>& events);
  void TakeQueued(std::vector<Text>& events) REQUIRES(m_mutex);
  bool CatchUp(std::vector<Text>& events);
  // Moves a listener on that has heard nothing for a while: an `id` alone.
  void TakeNote(std::vector<Text>& events);
  bool IsQuiet();

  ChangeSource& m_source;
  const Caller m_listener;
  std::function<void()> m_wake;
  int64_t m_position;         // Take's thread only: the last change that was dealt with
  int64_t m_told;             // Take's thread only: the last `id` that was sent
  bool m_subscribed = false;  // Take's thread only
  bool m_hasMore = false;     // Take's thread only
  bool m_isNoteDue = false;   // Take's thread only

  base::Mutex m_mutex;  // leaf
  std::deque<std::pair<int64_t, Text>> m_queue GUARDED_BY(m_mutex);
  size_t m_queuedBytes GUARDED_BY(m_mutex) = 0;
  bool m_readsItself GUARDED_BY(m_mutex) = true;
  bool m_closed GUARDED_BY(m_mutex) = false;
};

// The subscribed feeds by user. Not thread-safe: its owner locks.
class ChangeHub {
 public:
  void Add(const FeedPtr& feed);
  void Remove(ChangeFeed* feed);
  // Where memory does not suffice, all feeds are left to read by themselves: now, with the next change or with their
  // next sign of life.
  void Publish(const Change& change, WakeList& wake) noexcept;
  // Ends the feeds of these listeners. Where memory does not suffice, a stream ends with its next sign of life.
  void Close(const std::function<bool(const Caller&)>& concerns, WakeList& wake);

 private:
  // A feed that is destroyed withdraws itself, so that the pointers to those that stand here are valid.
  using Feeds = std::unordered_map<ChangeFeed*, std::weak_ptr<ChangeFeed>>;
  static void WakeUp(Feeds::value_type& feed, WakeList& wake) noexcept;
  void PublishOne(const Change& change, WakeList& wake);
  static void OfferTo(Feeds& feeds, EventTexts& texts, int64_t number, WakeList& wake);

  std::unordered_map<int32_t, Feeds> m_feedsOfUser;
};

}  // namespace server
