// SPDX-License-Identifier: Apache-2.0
#include "BizShared/NetCommManager.h"

#include <curl/curl.h>

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "BizShared/HttpClient.h"
#include "BizShared/details/EditWatch.h"
#include "BizShared/details/Process.h"
#include "BizShared/details/Reply.h"
#include "BizShared/details/RequestContext.h"
#include "NetLink/RapidJsonProto.h"
#include "VantBase/SingletonImpl.h"
#include "base/Mutex.h"

template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<BizShared::CNetCommManager>;

namespace BizShared {

namespace {

using std::chrono::milliseconds;
using Vant::Base::Error::ErrorCode;

constexpr int kTransportError = 1;  // main error; the sub error is curl's code
constexpr int kHttpError = 4;       // main error; the sub error is the HTTP status
constexpr milliseconds kDefaultTimeout{60000};

bool HasParentSegment(std::string_view path) {
  while (!path.empty()) {
    size_t end = std::min(path.find('/'), path.size());
    if (path.substr(0, end) == "..") return true;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return false;
}

// Whether the URL can be sent as it is without changing its meaning on the way.
bool IsSendable(const std::string& method, std::string_view url) {
  if (method != "GET" && method != "POST" && method != "PUT" && method != "DELETE") return false;
  if (!url.starts_with('/')) return false;
  for (unsigned char c : url) {
    if (c <= 0x20 || c == 0x7f || c == '#' || c == '\\') return false;
  }
  size_t query = url.find('?');
  if (query != std::string_view::npos && method != "GET") return false;
  return !HasParentSegment(url.substr(0, query));
}

milliseconds TimeoutOf(const NetLink::CClientSendInfo& send, const details::RequestContext& context) {
  constexpr unsigned long kMax = std::numeric_limits<int>::max();
  if (send.GetVal_Timeout() != 0) return milliseconds(std::min(send.GetVal_Timeout(), kMax));
  return context.receive ? milliseconds(0) : kDefaultTimeout;
}

bool IsSessionRefused(const HttpReply& reply) {
  if (reply.status != 401) return false;
  NetLink::CRapidJsonProto document;
  const ErrorCode error = details::ReadEnvelope(reply.body, document);
  return error.GetMainError() == 101 && error.GetSubError() == 2;
}

// One edit, from before it is sent until its end, however it ends.
class WatchedEdit {
 public:
  WatchedEdit(std::shared_ptr<details::IEditWatch> watch, const NetLink::CClientSendInfo& send)
      : m_watch(std::move(watch)), m_send(send), m_ticket(m_watch ? m_watch->OnEditBegins() : 0) {}
  WatchedEdit(const WatchedEdit&) = delete;
  WatchedEdit& operator=(const WatchedEdit&) = delete;
  ~WatchedEdit() {
    if (m_watch) m_watch->OnEditEnds(m_ticket, m_send, m_answer);
  }
  void Answered(const NetLink::CClientRecvInfo& recv) {
    if (m_watch) m_answer = recv.GetVal_Receive_Data();
  }

 private:
  const std::shared_ptr<details::IEditWatch> m_watch;
  const NetLink::CClientSendInfo& m_send;
  const uint64_t m_ticket;
  std::string m_answer;
};

bool Fail(NetLink::CClientRecvInfo& recv, const ErrorCode& error) {
  recv.SetVal_Receive_Data({});
  recv.SetVal_Error_code(error);
  return false;
}

bool Fail(NetLink::CClientRecvInfo& recv, int mainError, int subError) {
  return Fail(recv, ErrorCode(mainError, subError, 0, {}));
}

}  // namespace

// The lock is never held while sending.
class CNetCommManager::Impl {
 public:
  bool Renew(const std::string& refusedToken, details::CCanceller* canceller) {
    SessionRenewal renewal;
    {
      base::MutexLock lock(m_mutex);
      renewal = m_renewal;
    }
    return renewal && renewal(refusedToken, canceller);
  }

  base::Mutex m_mutex;
  std::string m_server GUARDED_BY(m_mutex);
  std::string m_caFile GUARDED_BY(m_mutex);
  std::string m_token GUARDED_BY(m_mutex);
  Transport m_transport GUARDED_BY(m_mutex);
  SessionRenewal m_renewal GUARDED_BY(m_mutex);
  std::weak_ptr<details::IEditWatch> m_watch GUARDED_BY(m_mutex);
};

CNetCommManager::CNetCommManager() : m_impl(std::make_unique<Impl>()) {
  HttpClient::Instance();  // whatever is made after the transport ends before libcurl does
}
CNetCommManager::~CNetCommManager() = default;

bool CNetCommManager::ClientSynSend(std::shared_ptr<NetLink::CClientRecvInfo>& recv,
                                    std::shared_ptr<NetLink::CClientSendInfo> send, unsigned int /*reserved*/) {
  if (!recv || !send) return false;
  if (!details::ClaimProcess()) return Fail(*recv, details::ForkedChildError());
  details::RequestContext context;
  if (send->GetVal_Method() == "GET") return Send(*recv, *send, context);
  WatchedEdit edit(GetEditWatch(), *send);
  if (!Send(*recv, *send, context)) return false;
  edit.Answered(*recv);
  return true;
}

void CNetCommManager::SetEditWatch(std::weak_ptr<details::IEditWatch> watch) {
  base::MutexLock lock(m_impl->m_mutex);
  m_impl->m_watch.swap(watch);
}

std::shared_ptr<details::IEditWatch> CNetCommManager::GetEditWatch() const {
  base::MutexLock lock(m_impl->m_mutex);
  return m_impl->m_watch.lock();
}

bool CNetCommManager::Send(NetLink::CClientRecvInfo& recv, const NetLink::CClientSendInfo& send,
                           details::RequestContext& context) {
  if (!details::ClaimProcess()) return Fail(recv, details::ForkedChildError());
  recv.SetVal_Error_code({});
  if (!IsSendable(send.GetVal_Method(), send.GetVal_URL())) return Fail(recv, kTransportError, CURLE_URL_MALFORMAT);

  HttpRequest request;
  Transport transport;
  {
    base::MutexLock lock(m_impl->m_mutex);
    transport = m_impl->m_transport;
    request.server = m_impl->m_server;
    request.caFile = m_impl->m_caFile;
    request.token = context.asUser ? m_impl->m_token : context.token;
  }
  context.token = request.token;
  if (transport) return transport(recv, send);
  if (request.server.empty()) return Fail(recv, kTransportError, CURLE_COULDNT_CONNECT);

  request.method = send.GetVal_Method();
  request.target = send.GetVal_URL();
  request.body = send.GetVal_send_data().empty() ? send.GetVal_Request_Data() : send.GetVal_send_data();
  request.timeout = TimeoutOf(send, context);
  request.silence = context.silence;
  request.receive = context.receive;
  request.idle = context.idle;
  request.canceller = context.canceller;
  HttpReply reply = HttpClient::Instance().Perform(request);
  // The refused request had no effect, so that it may be repeated whatever its method.
  if (context.asUser && reply.curlCode == 0 && IsSessionRefused(reply) &&
      m_impl->Renew(request.token, context.canceller)) {
    request.token = context.token = GetToken();
    reply = HttpClient::Instance().Perform(request);
  }

  context.status = reply.status;
  context.systemError = reply.systemError;
  context.resourceSequence = reply.resourceSequence;
  context.resourceHistory = reply.resourceHistory;
  if (reply.curlCode != 0) return Fail(recv, kTransportError, reply.curlCode);
  // The server's own errors are JSON; what a proxy, say, has to tell in HTML nobody here can read.
  const bool isRefused = reply.status < 200 || reply.status > 299;
  if (isRefused && (reply.body.empty() || reply.isOfOtherType)) return Fail(recv, kHttpError, reply.status);
  recv.SetVal_Receive_Data(std::move(reply.body));
  return true;
}

void CNetCommManager::SetServer(const std::string& root, const std::string& caFile) {
  if (details::IsForkedChild()) return;
  std::string withoutSlash = root.substr(0, root.find_last_not_of('/') + 1);
  {
    base::MutexLock lock(m_impl->m_mutex);
    m_impl->m_server = withoutSlash;
    m_impl->m_caFile = caFile;
  }
  HttpClient::Instance().CloseIdle();
}

std::string CNetCommManager::GetServer() const {
  base::MutexLock lock(m_impl->m_mutex);
  return m_impl->m_server;
}

std::string CNetCommManager::GetCaFile() const {
  base::MutexLock lock(m_impl->m_mutex);
  return m_impl->m_caFile;
}

void CNetCommManager::SetToken(const std::string& token) {
  base::MutexLock lock(m_impl->m_mutex);
  m_impl->m_token = token;
}

std::string CNetCommManager::GetToken() const {
  base::MutexLock lock(m_impl->m_mutex);
  return m_impl->m_token;
}

void CNetCommManager::SetSessionRenewal(SessionRenewal renewal) {
  base::MutexLock lock(m_impl->m_mutex);
  m_impl->m_renewal.swap(renewal);
}

void CNetCommManager::SetTransport(Transport transport) {
  base::MutexLock lock(m_impl->m_mutex);
  m_impl->m_transport.swap(transport);  // the old one is destroyed after the lock is released
}

}  // namespace BizShared
