// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "BizShared/details/Canceller.h"
#include "ResourceStore/ElementStore.h"
#include "ResourceStore/UpdateCallbackSlot.h"
#include "ResourceStore/details/ChangeStreamParser.h"
#include "ResourceStore/details/ResourceTexts.h"
#include "ResourceStore/details/StreamTimings.h"

namespace ResourceStore {

// One run from Start to Stop: a thread that downloads the lists and then follows the change stream. Everything below
// the first block is the thread's own.
class ViewSync {
 public:
  // What the thread fills and calls; must outlive it.
  struct Targets {
    details::ResourceTexts& texts;
    UpdateCallbackSlot& viewsCallback;
    UpdateCallbackSlot& groupsCallback;
  };

  explicit ViewSync(const Targets& targets);
  ~ViewSync();  // ends
  // Cancels what the thread does and waits for it; at most for a callback that runs.
  void End();
  bool IsThisThread() const;

 private:
  // The pauses between attempts.
  class Backoff {
   public:
    explicit Backoff(const details::StreamTimings& timings)
        : m_first(timings.firstPause), m_longest(timings.longestPause), m_next(timings.firstPause) {}
    std::chrono::milliseconds Next();
    void Reset() { m_next = m_first; }

   private:
    std::chrono::milliseconds m_first, m_longest, m_next;
  };

  struct List {
    std::string text;
    uint64_t number = 0;  // of the last change contained
  };
  struct Lists {
    List groups;
    List views;
  };

  // How a connection to the change stream ended.
  enum class StreamEnd { Lost, DownloadAgain };

  void Run();
  bool Download(Lists& lists);
  bool FetchAreas();
  bool FetchList(const char* name, const details::ListNames& names, List& list);
  template <class Attempt>
  bool Repeat(const char* name, Attempt attempt);

  void Follow();
  StreamEnd FollowOnce(Backoff& backoff);
  bool TakeEvent(const details::ChangeEvent& event, const std::string& token, StreamEnd& end);
  void Deliver(const details::ChangeEvent& event);
  bool DownloadAgain();

  Targets m_targets;
  const std::shared_ptr<ElementStore> m_elements = ElementStore::Shared();
  const details::StreamTimings m_timings = details::GetStreamTimings();
  BizShared::details::CCanceller m_canceller;

  uint64_t m_lastSeen = 0;      // number of the last change that is in the texts and was called back
  uint64_t m_groupsNumber = 0;  // number of the last change that the groups' list holds
  uint64_t m_viewsNumber = 0;   // the views' list likewise
  // The thread's own id while it runs: others ask for it while m_thread is joined.
  std::atomic<std::thread::id> m_threadId{};
  std::thread m_thread;
};

}  // namespace ResourceStore
