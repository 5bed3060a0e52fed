// SPDX-License-Identifier: Apache-2.0
#include "BizShared/UserCommonManager.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "BizShared/NetCommManager.h"
#include "BizShared/details/Canceller.h"
#include "BizShared/details/Exchange.h"
#include "BizShared/details/Process.h"
#include "NetLink/RapidJsonProto.h"
#include "VantBase/Log.h"
#include "VantBase/SingletonImpl.h"

template class Vant::Base::CSingleton<BizShared::CUserCommonManager>;

namespace BizShared {

namespace {

using Vant::Base::Error::ErrorCode;

constexpr const char* kSessionsUrl = "/NXAPI/Vantorel/Platform/V0/Sessions";
constexpr const char* kCurrentSessionUrl = "/NXAPI/Vantorel/Platform/V0/Sessions/Current";
constexpr unsigned long kLogoutTimeout = 5000;

struct Credentials {
  std::string userName;
  std::string password;
  std::string clientName;
};

struct Session {
  std::string token;
  int userId = -1;
  std::string userName;
};

bool IsBadPassword(const ErrorCode& error) {
  return error.GetMainError() == 101 && error.GetSubError() == 1;
}

// Opens a session on the server; false, and why in `error`, when it could not.
bool OpenSession(const Credentials& credentials, details::CCanceller* canceller, Session& session, ErrorCode& error) {
  NetLink::CRapidJsonProto body;
  body.set_v("/Session/UserName", credentials.userName);
  body.set_v("/Session/Password", credentials.password);
  body.set_v("/Session/ClientName", credentials.clientName);
  NetLink::CClientSendInfo send;
  send.SetVal_Method("POST");
  send.SetVal_URL(kSessionsUrl);
  send.SetVal_send_data(body.get_str(0));
  NetLink::CClientRecvInfo recv;
  details::Exchange exchange;
  exchange.canceller = canceller;
  exchange.asUser = false;
  if (!CNetCommManager::Instance().Send(recv, send, exchange)) {
    error = recv.GetVal_Error_code();
    return false;
  }
  NetLink::CRapidJsonProto reply;
  reply.set_str(recv.GetVal_Receive_Data());
  error =
      ErrorCode(reply.get_int_v("/ResponseStatus/ErrorModule", -1), reply.get_int_v("/ResponseStatus/ErrorCode", -1), 1,
                reply.get_v("/ResponseStatus/CascadingErrorInfo", ""));
  if (error.GetSubError() != 0) return false;
  session.token = reply.get_v("/ResponseStatus/Data/Session/Token", "");
  session.userId = reply.get_int_v("/ResponseStatus/Data/Session/UserID", -1);
  session.userName = reply.get_v("/ResponseStatus/Data/Session/UserName", credentials.userName);
  if (session.token.empty()) {
    error = ErrorCode(-1, -1, 1, {});  // as a reply without an envelope
    return false;
  }
  error = {};
  return true;
}

}  // namespace

// m_mutex guards everything; it is never held while sending. m_generation counts the logins and logouts, so that a
// renewal that was overtaken by one of them changes nothing.
class CUserCommonManager::Impl {
 public:
  void Forget() {
    m_loggedIn = false;
    m_userId = -1;
    m_userName.clear();
    m_credentials.reset();
    ++m_generation;
  }

  std::mutex m_mutex;
  std::condition_variable m_renewed;
  bool m_loggedIn = false;
  int m_userId = -1;
  std::string m_userName;
  std::optional<Credentials> m_credentials;
  unsigned int m_generation = 0;
  bool m_renewing = false;
};

CUserCommonManager::CUserCommonManager() : m_impl(std::make_unique<Impl>()) {}
CUserCommonManager::~CUserCommonManager() {
  if (details::IsForkedChild()) details::LeaveToParent(m_impl);
}

bool CUserCommonManager::GetUserID(int& id) {
  std::lock_guard<std::mutex> lock(m_impl->m_mutex);
  if (m_impl->m_loggedIn) id = m_impl->m_userId;
  return m_impl->m_loggedIn;
}

bool CUserCommonManager::GetUserInfo(int& id, std::string& name) {
  std::lock_guard<std::mutex> lock(m_impl->m_mutex);
  if (!m_impl->m_loggedIn) return false;
  id = m_impl->m_userId;
  name = m_impl->m_userName;
  return true;
}

bool CUserCommonManager::Login(const std::string& userName, const std::string& password, const std::string& clientName,
                               ErrorCode& error) {
  if (details::IsForkedChild()) {
    error = details::ForkedChildError();
    return false;
  }
  unsigned int generation = 0;
  {
    std::lock_guard<std::mutex> lock(m_impl->m_mutex);
    m_impl->Forget();
    generation = m_impl->m_generation;
    CNetCommManager::Instance().SetToken({});
  }
  Credentials credentials{userName, password, clientName};
  Session session;
  if (!OpenSession(credentials, nullptr, session, error)) return false;
  std::lock_guard<std::mutex> lock(m_impl->m_mutex);
  if (m_impl->m_generation != generation) {  // somebody else logged in or out meanwhile
    error = ErrorCode(-1, -1, 1, {});
    return false;
  }
  CNetCommManager::Instance().SetToken(session.token);
  m_impl->m_loggedIn = true;
  m_impl->m_userId = session.userId;
  m_impl->m_userName = session.userName;
  m_impl->m_credentials = std::move(credentials);
  return true;
}

void CUserCommonManager::Logout() {
  if (details::IsForkedChild()) return;
  details::Exchange exchange;
  exchange.asUser = false;
  {
    // Taken away before somebody else can log in, whose new session is not the one to end.
    std::lock_guard<std::mutex> lock(m_impl->m_mutex);
    m_impl->Forget();
    exchange.token = CNetCommManager::Instance().GetToken();
    CNetCommManager::Instance().SetToken({});
  }
  if (exchange.token.empty()) return;
  NetLink::CClientSendInfo send;
  send.SetVal_Method("DELETE");
  send.SetVal_URL(kCurrentSessionUrl);
  send.SetVal_Timeout(kLogoutTimeout);
  NetLink::CClientRecvInfo recv;
  CNetCommManager::Instance().Send(recv, send, exchange);
}

bool CUserCommonManager::Renew(const std::string& refusedToken, details::CCanceller* canceller) {
  Credentials credentials;
  unsigned int generation = 0;
  {
    std::unique_lock<std::mutex> lock(m_impl->m_mutex);
    while (m_impl->m_renewing) {
      if (canceller && canceller->IsCancelled()) return false;
      m_impl->m_renewed.wait_for(lock, std::chrono::milliseconds(50));
    }
    if (!m_impl->m_loggedIn) return false;
    std::string token = CNetCommManager::Instance().GetToken();
    if (!token.empty() && token != refusedToken) return true;
    if (!m_impl->m_credentials) return false;
    credentials = *m_impl->m_credentials;
    generation = m_impl->m_generation;
    m_impl->m_renewing = true;
  }
  Session session;
  ErrorCode error;
  bool opened = false;
  try {
    opened = OpenSession(credentials, canceller, session, error);
  } catch (const std::exception&) {  // want of memory; those who wait must hear of the end
  }
  {
    std::lock_guard<std::mutex> lock(m_impl->m_mutex);
    m_impl->m_renewing = false;
    bool overtaken = m_impl->m_generation != generation;
    if (overtaken) opened = false;
    if (opened) CNetCommManager::Instance().SetToken(session.token);
    if (!overtaken && IsBadPassword(error)) m_impl->m_credentials.reset();
    m_impl->m_renewed.notify_all();
  }
  if (!opened) {
    Vant::Base::details::IOrlFormatLog(4, "Platform", "The session could not be renewed: %d-%d", error.GetMainError(),
                                       error.GetSubError());
  }
  return opened;
}

void CUserCommonManager::SetUser(int id, const std::string& name) {
  std::lock_guard<std::mutex> lock(m_impl->m_mutex);
  m_impl->Forget();
  m_impl->m_loggedIn = true;
  m_impl->m_userId = id;
  m_impl->m_userName = name;
}

}  // namespace BizShared
