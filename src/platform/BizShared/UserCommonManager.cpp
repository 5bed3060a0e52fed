// SPDX-License-Identifier: Apache-2.0
#include "BizShared/UserCommonManager.h"

#include <chrono>
#include <exception>
#include <optional>

#include "BizShared/NetCommManager.h"
#include "BizShared/details/Canceller.h"
#include "BizShared/details/Process.h"
#include "BizShared/details/Reply.h"
#include "BizShared/details/ServerRequest.h"
#include "NetLink/RapidJsonProto.h"
#include "VantBase/Log.h"
#include "VantBase/SingletonImpl.h"
#include "base/Mutex.h"

template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<BizShared::CUserCommonManager>;

namespace BizShared {

namespace {

using Vant::Base::Error::ErrorCode;

constexpr const char* kSessions = "V0/Sessions";
constexpr const char* kCurrentSession = "V0/Sessions/Current";
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
  send.SetVal_URL(details::kPlatformUrl + std::string(kSessions));
  send.SetVal_send_data(body.get_str(0));
  details::RequestContext context;
  context.canceller = canceller;
  context.asUser = false;
  NetLink::CRapidJsonProto reply;
  if (!details::Ask(send, context, reply, error)) return false;
  session.token = reply.get_v("/ResponseStatus/Data/Session/Token", "");
  session.userId = reply.get_int_v("/ResponseStatus/Data/Session/UserID", -1);
  session.userName = reply.get_v("/ResponseStatus/Data/Session/UserName", credentials.userName);
  if (session.token.empty()) error = ErrorCode(-1, -1, 1, {});  // as a reply without an envelope
  return !session.token.empty();
}

}  // namespace

// The lock is never held while sending.
class CUserCommonManager::Impl {
 public:
  void Forget() REQUIRES(m_mutex) {
    m_loggedIn = false;
    m_userId = -1;
    m_userName.clear();
    m_credentials.reset();
    ++m_generation;
  }

  // The transport's SessionRenewal: logs in again with what Login was given, unless the token was replaced meanwhile.
  // Of several threads one logs in and the others wait for it. A password that the server refuses is not tried again.
  bool Renew(const std::string& refusedToken, details::CCanceller* canceller);

  base::Mutex m_mutex;
  base::Condition m_renewed;
  bool m_loggedIn GUARDED_BY(m_mutex) = false;
  int m_userId GUARDED_BY(m_mutex) = -1;
  std::string m_userName GUARDED_BY(m_mutex);
  std::optional<Credentials> m_credentials GUARDED_BY(m_mutex);
  // Counts the logins and logouts: a renewal that was overtaken by one of them changes nothing.
  unsigned int m_generation GUARDED_BY(m_mutex) = 0;
  bool m_renewing GUARDED_BY(m_mutex) = false;
};

CUserCommonManager::CUserCommonManager() : m_impl(std::make_shared<Impl>()) {
  // Requests may still be running at the end of the process, when this object is gone.
  CNetCommManager::Instance().SetSessionRenewal(
      [weak = std::weak_ptr(m_impl)](const std::string& refusedToken, details::CCanceller* canceller) {
        const std::shared_ptr<Impl> impl = weak.lock();
        return impl && impl->Renew(refusedToken, canceller);
      });
}
CUserCommonManager::~CUserCommonManager() {
  if (details::IsForkedChild()) details::LeaveToParent(m_impl);
}

bool CUserCommonManager::GetUserID(int& id) {
  base::MutexLock lock(m_impl->m_mutex);
  if (m_impl->m_loggedIn) id = m_impl->m_userId;
  return m_impl->m_loggedIn;
}

bool CUserCommonManager::GetUserInfo(int& id, std::string& name) {
  base::MutexLock lock(m_impl->m_mutex);
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
    base::MutexLock lock(m_impl->m_mutex);
    m_impl->Forget();
    generation = m_impl->m_generation;
    CNetCommManager::Instance().SetToken({});
  }
  Credentials credentials{userName, password, clientName};
  Session session;
  if (!OpenSession(credentials, nullptr, session, error)) return false;
  base::MutexLock lock(m_impl->m_mutex);
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
  details::RequestContext context;
  context.asUser = false;
  {
    // Taken away before somebody else can log in, whose new session is not the one to end.
    base::MutexLock lock(m_impl->m_mutex);
    m_impl->Forget();
    context.token = CNetCommManager::Instance().GetToken();
    CNetCommManager::Instance().SetToken({});
  }
  if (context.token.empty()) return;
  NetLink::CClientSendInfo send;
  send.SetVal_Method("DELETE");
  send.SetVal_URL(details::kPlatformUrl + std::string(kCurrentSession));
  send.SetVal_Timeout(kLogoutTimeout);
  NetLink::CClientRecvInfo recv;
  CNetCommManager::Instance().Send(recv, send, context);
}

bool CUserCommonManager::Impl::Renew(const std::string& refusedToken, details::CCanceller* canceller) {
  Credentials credentials;
  unsigned int generation = 0;
  {
    base::MutexLock lock(m_mutex);
    while (m_renewing) {
      if (canceller && canceller->IsCancelled()) return false;
      m_renewed.WaitFor(lock, std::chrono::milliseconds(50));
    }
    if (!m_loggedIn) return false;
    std::string token = CNetCommManager::Instance().GetToken();
    if (!token.empty() && token != refusedToken) return true;
    if (!m_credentials) return false;
    credentials = *m_credentials;
    generation = m_generation;
    m_renewing = true;
  }
  Session session;
  ErrorCode error;
  bool opened = false;
  try {
    opened = OpenSession(credentials, canceller, session, error);
  } catch (const std::exception&) {  // want of memory; those who wait must hear of the end
  }
  {
    base::MutexLock lock(m_mutex);
    m_renewing = false;
    bool overtaken = m_generation != generation;
    if (overtaken) opened = false;
    if (opened) CNetCommManager::Instance().SetToken(session.token);
    if (!overtaken && IsBadPassword(error)) m_credentials.reset();
    m_renewed.NotifyAll();
  }
  if (!opened) {
    Vant::Base::details::IOrlFormatLog(4, "Platform", "The session could not be renewed: %d-%d", error.GetMainError(),
                                       error.GetSubError());
  }
  return opened;
}

void CUserCommonManager::SetUser(int id, const std::string& name) {
  base::MutexLock lock(m_impl->m_mutex);
  m_impl->Forget();
  m_impl->m_loggedIn = true;
  m_impl->m_userId = id;
  m_impl->m_userName = name;
}

}  // namespace BizShared
