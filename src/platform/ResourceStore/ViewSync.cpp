// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/ViewSync.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "BizShared/NetCommManager.h"
#include "BizShared/details/Exchange.h"
#include "ResourceStore/Reply.h"
#include "VantBase/Log.h"

namespace ResourceStore {

namespace {

using BizShared::CNetCommManager;
using BizShared::details::Exchange;
using details::ChangeEvent;
using std::chrono::milliseconds;
using Vant::Base::Error::ErrorCode;

constexpr int kWarning = 4;
constexpr const char* kModule = "Platform";
constexpr int kGone = 410;
constexpr int kTransportError = 1, kNoMemory = 27;  // as the transport says it

// Nothing may be thrown out of the thread: want of memory ends that one attempt. Whether it came to its end.
template <class Step>
bool Ends(Step step) noexcept {
  try {
    step();
    return true;
  } catch (...) {
    return false;
  }
}

NetLink::CClientSendInfo Get(const std::string& name) {
  NetLink::CClientSendInfo send;
  send.SetVal_Method("GET");
  send.SetVal_URL(kPlatformUrl + name);
  return send;
}

}  // namespace

milliseconds ViewSync::Backoff::Next() {
  return std::exchange(m_next, std::min(m_next * 2, m_longest));
}

ViewSync::ViewSync(details::ChangeRelay& relay) : m_relay(relay), m_thread([this] { Run(); }) {}

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
  if (DownloadFor(&details::ChangeRelay::Downloaded)) Follow();
  m_threadId = std::thread::id();  // the next thread may get the same
}

bool ViewSync::DownloadFor(void (details::ChangeRelay::*take)(details::DownloadedList, details::DownloadedList)) {
  return Repeat("The lists", [&](ErrorCode&) {
    Lists lists;
    if (!Download(lists)) return false;
    (m_relay.*take)(std::move(lists.groups), std::move(lists.views));
    return true;
  });
}

// A view of the views' list may lie in a group that was made after the groups' list was, and would find it too late: so
// where there were changes between the two lists, the groups are asked for once more.
bool ViewSync::Download(Lists& lists) {
  const auto fetchGroups = [&] { return FetchList("V0/ViewGroups", details::kViewGroupNames, lists.groups); };
  if (!FetchAreas() || !fetchGroups() || !FetchList("V0/Views", details::kViewNames, lists.views)) return false;
  return lists.groups.number >= lists.views.number || fetchGroups();
}

// Attempts until it succeeds; false when cancelled.
template <class Attempt>
bool ViewSync::Repeat(const char* name, Attempt attempt) {
  Backoff backoff(m_timings);
  while (!m_canceller.IsCancelled()) {
    ErrorCode error(kTransportError, kNoMemory, 0, {});
    bool succeeded = false;
    Ends([&] { succeeded = attempt(error); });
    if (m_canceller.IsCancelled()) return false;
    if (succeeded) return true;
    milliseconds pause = backoff.Next();
    Vant::Base::details::IOrlFormatLog(kWarning, kModule, "%s could not be downloaded (%d-%d), again in %d ms", name,
                                       error.GetMainError(), error.GetSubError(), static_cast<int>(pause.count()));
    if (!m_canceller.Pause(pause)) return false;
  }
  return false;
}

bool ViewSync::FetchAreas() {
  return Repeat("V0/Areas", [this](ErrorCode& error) {
    NetLink::CClientSendInfo send = Get("V0/Areas");
    send.SetVal_Timeout(static_cast<unsigned long>(m_timings.listTimeout.count()));
    NetLink::CClientRecvInfo recv;
    Exchange exchange;
    exchange.canceller = &m_canceller;
    if (!CNetCommManager::Instance().Send(recv, send, exchange)) {
      error = recv.GetVal_Error_code();
      return false;
    }
    NetLink::CRapidJsonProto reply;
    error = ReadEnvelope(recv.GetVal_Receive_Data(), reply);
    if (error.GetSubError() != 0) return false;
    int count = reply.get_cnt("/ResponseStatus/Data/AreaList/Area");
    for (int i = 1; i <= count; ++i) {
      std::string prefix = "/ResponseStatus/Data/AreaList/Area[" + std::to_string(i) + "]/";
      int id = reply.get_int_v(prefix + "ID", -1);
      if (id != -1) m_elements->PutArea(static_cast<unsigned int>(id), reply.get_v(prefix + "Name", ""));
    }
    return true;
  });
}

bool ViewSync::FetchList(const char* name, const details::ListNames& names, details::DownloadedList& list) {
  return Repeat(name, [&](ErrorCode& error) {
    NetLink::CClientSendInfo send = Get(name);
    send.SetVal_Timeout(static_cast<unsigned long>(m_timings.listTimeout.count()));
    NetLink::CClientRecvInfo recv;
    Exchange exchange;
    exchange.canceller = &m_canceller;
    if (!CNetCommManager::Instance().Send(recv, send, exchange)) {
      error = recv.GetVal_Error_code();
      return false;
    }
    list.text = recv.GetVal_Receive_Data();
    details::ListDocument envelope;
    if (!details::ReadListDocument(list.text, names, false, envelope)) envelope = {};
    error = ErrorCode(envelope.errorModule, envelope.errorCode, 1, {});
    if (envelope.errorCode != 0) return false;
    // Without the number the changes after this list could not be told from those before it.
    std::optional<uint64_t> number = details::ToChangeNumber(exchange.resourceSequence);
    if (!number) {
      error = ErrorCode(-1, -1, 1, {});
      return false;
    }
    list.number = *number;
    list.isNumbered = envelope.saysNumber;
    return true;
  });
}

void ViewSync::Follow() {
  Backoff backoff(m_timings);
  while (!m_canceller.IsCancelled()) {
    auto began = std::chrono::steady_clock::now();
    StreamEnd end = StreamEnd::Lost;
    Ends([&] { end = FollowOnce(backoff); });
    if (m_canceller.IsCancelled()) return;
    Ends([&] { m_relay.TellDue(); });
    if (std::chrono::steady_clock::now() - began > m_timings.longestPause) backoff.Reset();
    if (!m_canceller.Pause(backoff.Next())) return;
    // After the pause: in one between the lists and the stream, a server that keeps few changes would forget those too.
    if (end == StreamEnd::DownloadAgain && !DownloadFor(&details::ChangeRelay::DownloadedAgain)) return;
  }
}

ViewSync::StreamEnd ViewSync::FollowOnce(Backoff& backoff) {
  StreamEnd end = StreamEnd::Lost;
  details::ChangeStreamParser parser;
  std::vector<ChangeEvent> events;
  Exchange exchange;
  exchange.canceller = &m_canceller;
  exchange.silence = m_timings.silence;
  exchange.idle = [this] { Ends([&] { m_relay.TellDue(); }); };
  exchange.receive = [&](std::string_view piece) {
    parser.Feed(piece, events);
    for (const ChangeEvent& event : events) {
      if (m_canceller.IsCancelled() || !TakeEvent(event, exchange.token, end)) return false;
      backoff.Reset();
    }
    events.clear();
    return true;
  };
  NetLink::CClientRecvInfo recv;
  bool answered =
      CNetCommManager::Instance().Send(recv, Get("V0/Changes?After=" + std::to_string(m_relay.Position())), exchange);
  if (m_canceller.IsCancelled()) return end;
  if (exchange.status == kGone) end = StreamEnd::DownloadAgain;
  ErrorCode error = recv.GetVal_Error_code();
  Vant::Base::details::IOrlFormatLog(kWarning, kModule, "The change stream ended after change %llu (HTTP %d, %d-%d)",
                                     static_cast<unsigned long long>(m_relay.Position()), exchange.status,
                                     answered ? 0 : error.GetMainError(), answered ? 0 : error.GetSubError());
  return end;
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
