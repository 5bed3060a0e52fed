// SPDX-License-Identifier: Apache-2.0
// Internal to the library.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "BizShared/details/Canceller.h"
#include "ResourceStore/ElementStore.h"
#include "ResourceStore/details/ChangeRelay.h"
#include "ResourceStore/details/ChangeStreamParser.h"
#include "ResourceStore/details/StatusBoard.h"
#include "ResourceStore/details/StreamTimings.h"

namespace BizShared::details {
struct RequestContext;
}

namespace ResourceStore {

// One run from Start to Stop: a thread that downloads the lists and then follows the change stream. What is private
// belongs to that thread, but for the canceller and the thread itself.
class ViewSync {
 public:
  // The thread fills `relay` and calls back through it, and says in `status` how far it is. Both must outlive it.
  ViewSync(details::ChangeRelay& relay, details::StatusBoard& status);
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

  struct Lists {
    details::DownloadedList groups;
    details::DownloadedList views;
    std::string history;
  };

  // How a connection to the change stream ended.
  enum class StreamEnd { Lost, DownloadAgain, OtherHistory };

  void Run();
  // Attempts until `take` has the lists; false when cancelled: take(groups, views).
  template <class Take>
  bool DownloadFor(Take take);
  bool Download(Lists& lists);
  // Gets the text of that resource until `take` accepts it: take(text, the reply's context, error).
  template <class Take>
  bool Fetch(const char* name, Take take);
  bool FetchAreas();
  bool FetchList(const char* name, const details::ListNames& names, details::DownloadedList& list,
                 std::string& history);
  template <class Attempt>
  bool Repeat(const char* name, Attempt attempt);

  void Follow();
  StreamEnd FollowOnce(Backoff& backoff);
  std::string StreamName() const;
  // Of a stream that has ended.
  void NoteReply(const BizShared::details::RequestContext& context, StreamEnd& end);
  void NoteStreamEnd(bool wasAnswered, int httpStatus, const Vant::Base::Error::ErrorCode& error);
  bool TakeEvent(const details::ChangeEvent& event, const std::string& token, StreamEnd& end);

  details::ChangeRelay& m_relay;
  details::StatusBoard& m_status;
  int m_systemError = 0;  // of the last request
  const std::shared_ptr<ElementStore> m_elements = ElementStore::Shared();
  const details::StreamTimings m_timings = details::GetStreamTimings();
  BizShared::details::CCanceller m_canceller;
  std::string m_history;  // to which the relay's position belongs, as the server names it; empty where it does not

  // The thread's own id while it runs: others ask for it while m_thread is joined.
  std::atomic<std::thread::id> m_threadId{};
  std::thread m_thread;
};

}  // namespace ResourceStore
