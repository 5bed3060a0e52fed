// SPDX-License-Identifier: Apache-2.0
#include "server/changes/ChangeFeed.h"

#include <cstdio>
#include <exception>
#include <new>
#include <set>

namespace server {

namespace {

constexpr size_t kMaxQueued = 1000;
constexpr size_t kMaxQueuedBytes = size_t{4} << 20;
constexpr size_t kTakeBytes = size_t{1} << 20;

// What `action` answers; false when it throws.
template <class Action>
bool OrEnd(const Action& action) {
  try {
    return action();
  } catch (const std::exception& e) {
    std::fprintf(stderr, "viewserver: a change stream ends: %s\n", e.what());
    return false;
  }
}

}  // namespace

void Wake(const WakeList& list) {
  for (const auto& [pointer, feed] : list) {
    if (feed) feed->Wake();
  }
}

bool ChangeFeed::Take(std::vector<Text>& events) {
  return OrEnd([&] { return TakeNext(events); });
}

bool ChangeFeed::KeepAlive() {
  m_isNoteDue = true;
  return OrEnd([this] { return m_source.TouchSession(m_listener.sessionId); });
}

bool ChangeFeed::TakeNext(std::vector<Text>& events) {
  {
    const base::MutexLock lock(m_mutex);
    if (m_closed) return false;
    TakeQueued(events);
    if (!events.empty()) return true;
    // Only once the queue is empty: what stands in it would be read a second time.
    if (m_readsItself) m_subscribed = false;
  }
  if (!m_subscribed && !CatchUp(events)) return false;
  TakeNote(events);
  return true;
}

void ChangeFeed::TakeQueued(std::vector<Text>& events) {
  for (size_t bytes = 0; bytes < kTakeBytes && !m_queue.empty(); m_queue.pop_front()) {
    m_position = m_told = m_queue.front().first;
    bytes += m_queue.front().second->size();
    m_queuedBytes -= m_queue.front().second->size();
    events.push_back(std::move(m_queue.front().second));
  }
}

bool ChangeFeed::CatchUp(std::vector<Text>& events) {
  ChangePiece piece;
  const ChangeSource::Reach reach = m_source.ReadChanges(shared_from_this(), m_position, piece);
  if (reach == ChangeSource::Reach::kLost) return false;
  m_subscribed = reach == ChangeSource::Reach::kLive;
  m_hasMore = !m_subscribed;
  for (const Change& change : piece.changes) {
    if (!IsSound(change)) continue;  // nobody hears what a damaged store makes of it
    if (Text event = EventTexts(change).For(m_listener)) events.push_back(std::move(event));
    m_told = change.number;
  }
  m_position = piece.upTo;
  m_isNoteDue = m_isNoteDue || m_subscribed;
  return true;
}

void ChangeFeed::TakeNote(std::vector<Text>& events) {
  if (!m_isNoteDue || !m_subscribed) return;
  if (events.empty()) {
    // In this order: what was offered up to that number stands in the queue by now.
    const int64_t last = m_source.LastChange();
    if (!IsQuiet()) return;
    m_position = last;
  }
  m_isNoteDue = false;
  if (m_position <= m_told) return;
  events.push_back(std::make_shared<std::string>("id: " + std::to_string(m_position) + "\n\n"));
  m_told = m_position;
}

bool ChangeFeed::IsQuiet() {
  const base::MutexLock lock(m_mutex);
  return m_queue.empty() && !m_readsItself;
}

void ChangeFeed::Offer(int64_t number, const Text& event) {
  const base::MutexLock lock(m_mutex);
  const bool fits =
      m_queue.size() < kMaxQueued && (m_queuedBytes == 0 || m_queuedBytes + event->size() <= kMaxQueuedBytes);
  m_readsItself = m_readsItself || !fits;
  if (m_readsItself) return;
  m_queue.emplace_back(number, event);
  m_queuedBytes += event->size();
}

void ChangeFeed::FallBehind() noexcept {
  const base::MutexLock lock(m_mutex);
  m_readsItself = true;
}

void ChangeFeed::Subscribed() {
  const base::MutexLock lock(m_mutex);
  m_readsItself = false;
}

void ChangeFeed::Close() {
  const base::MutexLock lock(m_mutex);
  m_closed = true;
}

void ChangeHub::Add(const FeedPtr& feed) {
  m_feedsOfUser[feed->Listener().userId][feed.get()] = feed;
  feed->Subscribed();
}

void ChangeHub::Remove(ChangeFeed* feed) {
  const auto it = m_feedsOfUser.find(feed->Listener().userId);
  if (it != m_feedsOfUser.end()) it->second.erase(feed);
}

// Those that read by themselves are woken, too: they may have missed that they were to.
void ChangeHub::OfferTo(Feeds& feeds, EventTexts& texts, int64_t number, WakeList& wake) {
  for (auto& [pointer, weak] : feeds) {
    FeedPtr& feed = wake[pointer];
    if (!feed) feed = weak.lock();
    const Text text = feed ? texts.For(feed->Listener()) : nullptr;
    if (text) feed->Offer(number, text);
  }
}

void ChangeHub::WakeUp(Feeds::value_type& feed, WakeList& wake) noexcept {
  try {
    FeedPtr& woken = wake[feed.first];  // first, for what is locked must be kept
    if (!woken) woken = feed.second.lock();
  } catch (const std::bad_alloc&) {
    // The next sign of life does it.
  }
}

void ChangeHub::Publish(const Change& change, WakeList& wake) noexcept {
  try {
    PublishOne(change, wake);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "viewserver: change streams fall behind: %s\n", e.what());
    for (auto& [user, feeds] : m_feedsOfUser) {
      for (auto& feed : feeds) {
        feed.first->FallBehind();
        WakeUp(feed, wake);
      }
    }
  }
}

void ChangeHub::PublishOne(const Change& change, WakeList& wake) {
  EventTexts texts(change);
  if (change.before.everybody || change.after.everybody) {
    for (auto& [user, feeds] : m_feedsOfUser) OfferTo(feeds, texts, change.number, wake);
    return;
  }
  std::set<int32_t> users(change.before.users.begin(), change.before.users.end());
  users.insert(change.after.users.begin(), change.after.users.end());
  for (int32_t user : users) {
    const auto it = m_feedsOfUser.find(user);
    if (it != m_feedsOfUser.end()) OfferTo(it->second, texts, change.number, wake);
  }
}

void ChangeHub::Close(const std::function<bool(const Caller&)>& concerns, WakeList& wake) {
  for (auto& [user, feeds] : m_feedsOfUser) {
    for (auto& feed : feeds) {
      if (!concerns(feed.first->Listener())) continue;
      feed.first->Close();
      WakeUp(feed, wake);
    }
  }
}

}  // namespace server
