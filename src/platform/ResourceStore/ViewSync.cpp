// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/ViewSync.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "BizShared/NetCommManager.h"
#include "BizShared/details/Reply.h"
#include "BizShared/details/RequestContext.h"
#include "BizShared/details/ServerRequest.h"
#include "VantBase/Log.h"
#include "base/Mutex.h"

namespace ResourceStore {

namespace {

using BizShared::CNetCommManager;
using BizShared::details::Ask;
using BizShared::details::GetRequest;
using BizShared::details::RequestContext;
using details::ChangeEvent;
using std::chrono::milliseconds;
using Vant::Base::Error::ErrorCode;

constexpr int kWarning = 4;
constexpr const char* kModule = "Platform";
constexpr int kStreams = 200, kGone = 410;
constexpr int kHttpError = 4;
constexpr int kTransportError = 1, kNoMemory = 27;  // as the transport says it

base::Mutex s_timingsMutex;
details::StreamTimings s_timings GUARDED_BY(s_timingsMutex);

// Nothing may be thrown out of the thread: want of memory ends the step.
template <class Step>
void WithoutThrowing(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

}  // namespace

void details::SetStreamTimings(const StreamTimings& timings) {
  base::MutexLock lock(s_timingsMutex);
  s_timings = timings;
}

details::StreamTimings details::GetStreamTimings() {
  base::MutexLock lock(s_timingsMutex);
  return s_timings;
}

milliseconds ViewSync::Backoff::Next() {
  return std::exchange(m_next, std::min(m_next * 2, m_longest));
}

ViewSync::ViewSync(details::ChangeRelay& relay, details::StatusBoard& status)
    : m_relay(relay), m_status(status), m_thread([this] { Run(); }) {}

ViewSync::~ViewSync() {
  End();
}

void ViewSync::End() {
  m_canceller.Cancel();
  if (!m_thread.joinable()) return;
  // The process may be ending from within a callback.
  if (IsThisThread()) {
    m_thread.detach();
  } else {
    m_thread.join();
  }
  m_relay.SetSleeper(nullptr);
}

bool ViewSync::IsThisThread() const {
  return m_threadId == std::this_thread::get_id();
}

void ViewSync::Run() {
  m_threadId = std::this_thread::get_id();
  m_relay.SetSleeper(&m_canceller);
  m_status.Tell();
  const bool isLoaded = DownloadFor([this](details::DownloadedList groups, details::DownloadedList views) {
    m_relay.Downloaded(std::move(groups), std::move(views));
  });
  if (isLoaded) Follow();
  m_threadId = std::thread::id();  // the next thread may get the same
}

template <class Take>
bool ViewSync::DownloadFor(Take take) {
  return Repeat("The lists", [&](ErrorCode& error) {
    Lists lists;
    if (!Download(lists)) {
      error = ErrorCode(-1, -1, 1, {});
      return false;
    }
    take(std::move(lists.groups), std::move(lists.views));
    m_history = std::move(lists.history);
    m_status.Become(DownloadState::Ready);
    return true;
  });
}

// A view of the views' list may lie in a group that was made after the groups' list was, and would find it too late: so
// where there were changes between the two lists, the groups are asked for once more. Where the server was ended
// between them, and perhaps another store was put in its place, their numbers need not belong together: the attempt has
// failed then.
bool ViewSync::Download(Lists& lists) {
  std::string groupsHistory;
  const auto fetchGroups = [&] {
    return FetchList("V0/ViewGroups", details::kViewGroupNames, lists.groups, groupsHistory);
  };
  if (!FetchAreas() || !fetchGroups() || !FetchList("V0/Views", details::kViewNames, lists.views, lists.history)) {
    return false;
  }
  if (lists.groups.number < lists.views.number && !fetchGroups()) return false;
  return groupsHistory == lists.history;
}

// Attempts until it succeeds; false when cancelled.
template <class Attempt>
bool ViewSync::Repeat(const char* name, Attempt attempt) {
  Backoff backoff(m_timings);
  while (!m_canceller.IsCancelled()) {
    ErrorCode error(kTransportError, kNoMemory, 0, {});
    bool succeeded = false;
    WithoutThrowing([&] { succeeded = attempt(error); });
    if (m_canceller.IsCancelled()) return false;
    if (succeeded) return true;
    WithoutThrowing([&] { m_status.Fail(error, std::exchange(m_systemError, 0)); });
    milliseconds pause = backoff.Next();
    Vant::Base::details::IOrlFormatLog(kWarning, kModule, "%s could not be downloaded (%d-%d), again in %d ms", name,
                                       error.GetMainError(), error.GetSubError(), static_cast<int>(pause.count()));
    if (!m_canceller.Pause(pause)) return false;
  }
  return false;
}

template <class Take>
bool ViewSync::Fetch(const char* name, Take take) {
  return Repeat(name, [&](ErrorCode& error) {
    NetLink::CClientSendInfo send = GetRequest(name);
    send.SetVal_Timeout(static_cast<unsigned long>(m_timings.listTimeout.count()));
    RequestContext context;
    context.canceller = &m_canceller;
    std::string text;
    const bool isAnswered = Ask(send, context, text, error);
    m_systemError = context.systemError;
    if (!isAnswered || !take(std::move(text), context, error)) return false;
    m_status.Become(DownloadState::Downloading);
    return true;
  });
}

bool ViewSync::FetchAreas() {
  return Fetch("V0/Areas", [this](const std::string& text, const RequestContext&, ErrorCode& error) {
    NetLink::CRapidJsonProto reply;
    error = BizShared::details::ReadEnvelope(text, reply);
    if (error.GetSubError() != 0) return false;
    BizShared::details::ForEachElement(reply, "AreaList/Area", [&](const std::string& path) {
      const int id = reply.get_int_v(path + "ID", -1);
      if (id != -1) m_elements->PutArea(static_cast<unsigned int>(id), reply.get_v(path + "Name", ""));
    });
    return true;
  });
}

bool ViewSync::FetchList(const char* name, const details::ListNames& names, details::DownloadedList& list,
                         std::string& history) {
  return Fetch(name, [&](std::string text, const RequestContext& context, ErrorCode& error) {
    details::ListDocument envelope;
    if (!details::ReadListDocument(text, names, false, envelope)) envelope = {};
    error = ErrorCode(envelope.errorModule, envelope.errorCode, 1, {});
    if (envelope.errorCode != 0) return false;
    // Without the number the changes after this list could not be told from those before it.
    const std::optional<uint64_t> number = details::ToChangeNumber(context.resourceSequence);
    if (!number) {
      error = ErrorCode(-1, -1, 1, {});
      return false;
    }
    list = {std::move(text), *number, envelope.saysNumber};
    history = context.resourceHistory;
    return true;
  });
}

void ViewSync::Follow() {
  Backoff backoff(m_timings);
  while (!m_canceller.IsCancelled()) {
    auto began = std::chrono::steady_clock::now();
    StreamEnd end = StreamEnd::Lost;
    WithoutThrowing([&] { end = FollowOnce(backoff); });
    if (m_canceller.IsCancelled()) return;
    WithoutThrowing([&] { m_relay.TellDue(); });
    if (std::chrono::steady_clock::now() - began > m_timings.longestPause) backoff.Reset();
    if (!m_canceller.Pause(backoff.Next())) return;
    // The pause comes first. After the download it would give a server that keeps few changes time to drop new ones.
    if (end == StreamEnd::Lost) continue;
    const bool beginsAnew = end == StreamEnd::OtherHistory;
    const bool isLoaded = DownloadFor([&](details::DownloadedList groups, details::DownloadedList views) {
      m_relay.DownloadedAgain(std::move(groups), std::move(views), beginsAnew);
    });
    if (!isLoaded) return;
  }
}

ViewSync::StreamEnd ViewSync::FollowOnce(Backoff& backoff) {
  StreamEnd end = StreamEnd::Lost;
  details::ChangeStreamParser parser;
  std::vector<ChangeEvent> events;
  RequestContext context;
  context.canceller = &m_canceller;
  context.silence = m_timings.silence;
  context.idle = [this] { WithoutThrowing([&] { m_relay.TellDue(); }); };
  bool isEndedHere = false;
  context.receive = [&](std::string_view piece) {
    m_status.Become(DownloadState::Ready);
    parser.Feed(piece, events);
    for (const ChangeEvent& event : events) {
      isEndedHere = m_canceller.IsCancelled() || !TakeEvent(event, context.token, end);
      if (isEndedHere) return false;
      backoff.Reset();
    }
    events.clear();
    return true;
  };
  NetLink::CClientRecvInfo recv;
  bool answered = CNetCommManager::Instance().Send(recv, GetRequest(StreamName()), context);
  if (m_canceller.IsCancelled()) return end;
  NoteReply(context, end);
  ErrorCode error = recv.GetVal_Error_code();
  m_systemError = context.systemError;
  if (!isEndedHere) NoteStreamEnd(answered, context.status, error);
  Vant::Base::details::IOrlFormatLog(kWarning, kModule, "The change stream ended after change %llu (HTTP %d, %d-%d)",
                                     static_cast<unsigned long long>(m_relay.Position()), context.status,
                                     answered ? 0 : error.GetMainError(), answered ? 0 : error.GetSubError());
  return end;
}

std::string ViewSync::StreamName() const {
  const std::string name = "V0/Changes?After=" + std::to_string(m_relay.Position());
  return m_history.empty() ? name : name + "&History=" + m_history;
}

void ViewSync::NoteReply(const RequestContext& context, StreamEnd& end) {
  if (context.status == kGone) {
    // A server that names histories names its own where the position was not of it.
    end = context.resourceHistory.empty() ? StreamEnd::DownloadAgain : StreamEnd::OtherHistory;
  } else if (context.status == kStreams && !context.resourceHistory.empty()) {
    m_history = context.resourceHistory;
  }
}

// A stream that the server closes in order is asked for again, and that alone is no failure.
void ViewSync::NoteStreamEnd(bool wasAnswered, int httpStatus, const ErrorCode& error) {
  if (wasAnswered && (httpStatus == kStreams || httpStatus == kGone)) return;
  m_status.Fail(wasAnswered ? ErrorCode(kHttpError, httpStatus, 0, {}) : error, std::exchange(m_systemError, 0));
}

// False ends the connection; `end` then says what follows.
bool ViewSync::TakeEvent(const ChangeEvent& event, const std::string& token, StreamEnd& end) {
  if (event.oversize) {
    end = StreamEnd::DownloadAgain;
    return false;
  }
  std::optional<uint64_t> number = event.id ? details::ToChangeNumber(*event.id) : std::nullopt;
  if (!number || *number <= m_relay.Position()) return true;
  // The server tells a session's own edits by its token: once that was renewed, ask again with the new one.
  if (CNetCommManager::Instance().GetToken() != token) return false;
  m_relay.TakeEvent(*number, event.type, event.data);
  return true;
}

}  // namespace ResourceStore
