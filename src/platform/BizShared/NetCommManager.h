// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "BizShared/Export.h"
#include "NetLink/ClientMessage.h"
#include "VantBase/Singleton.h"

namespace BizShared {
class CNetCommManager;
}
extern template class BIZSHARED_TEMPLATE_API Vant::Base::CSingleton<BizShared::CNetCommManager>;

namespace BizShared {

namespace details {
class CCanceller;
class IEditWatch;
struct RequestContext;
}  // namespace details

// The process-wide HTTP(S) transport. Any thread, several at once; connections are kept and reused.
//
// The connections belong to the process that first sends a request or starts a download. In a child that it makes with
// fork() nothing is sent: every request is false with main 1, sub 1000, and SetServer and the platform's other set-up
// calls do nothing. The child may end or exec as it likes; the parent does not notice. Fork first where the child is to
// talk to the server itself.
class BIZSHARED_API CNetCommManager : public Vant::Base::CSingleton<CNetCommManager> {
 public:
  ~CNetCommManager();

  // Sends and waits. `recv` must point to a record. The last argument is reserved and must be 0.
  //  - Success: true as soon as a 2xx arrived, or another HTTP reply with a body that may be the server's; `recv` holds
  //    the body. It may be the server's when its Content-Type is absent or JSON (application/json, text/json,
  //    ...+json).
  //  - Failure: false, and `recv` holds the error record: main 1 and curl's code as sub error, or main 4 and the HTTP
  //    status.
  //  - Time-outs: 10 s to connect, 60 s in all unless the request sets one.
  //  - Refused without being sent, with main 1, sub 3: a method other than GET, POST, PUT and DELETE; a URL that does
  //    not begin with '/', or that has a blank, a control character, '#', '\', a ".." segment or, in anything but a
  //    GET, '?'.
  //  - Repetition: a GET is sent again when a kept connection turns out to be dead. Anything else is not, so that an
  //    edit whose answer is lost is not made twice. Any request is sent again with the new token when the server no
  //    longer knew the session and the session was renewed: it has had no effect then.
  bool ClientSynSend(std::shared_ptr<NetLink::CClientRecvInfo>& recv, std::shared_ptr<NetLink::CClientSendInfo> send,
                     unsigned int reserved);

  // For the platform's own libraries: ClientSynSend with a context, of which the edit watch does not hear.
  bool Send(NetLink::CClientRecvInfo& recv, const NetLink::CClientSendInfo& send, details::RequestContext& context);
  // For the platform's own libraries: who hears of edits. It is not kept alive.
  void SetEditWatch(std::weak_ptr<details::IEditWatch> watch);
  std::shared_ptr<details::IEditWatch> GetEditWatch() const;
  // For CUserCommonManager: what gets another token when the server no longer knows the session of this one. Answers
  // whether SetToken was given one meanwhile; called on the sending threads, without a lock held.
  using SessionRenewal = std::function<bool(const std::string& refusedToken, details::CCanceller* canceller)>;
  void SetSessionRenewal(SessionRenewal renewal);

  // Host set-up. The server's root, "http://HOST:PORT" or "https://HOST:PORT", and a file of CA certificates (empty:
  // the system's).
  void SetServer(const std::string& root, const std::string& caFile = {});
  std::string GetServer() const;
  std::string GetCaFile() const;
  // Host set-up, normally by CUserCommonManager: the token sent as "Authorization: Bearer"; empty sends none.
  void SetToken(const std::string& token);
  std::string GetToken() const;

  // Seam for tests: replaces the network. The function fills the reply and answers as ClientSynSend does; empty
  // restores the network. It is called without a lock held, from several threads at once.
  using Transport = std::function<bool(NetLink::CClientRecvInfo& recv, const NetLink::CClientSendInfo& send)>;
  void SetTransport(Transport transport);

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CNetCommManager();
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace BizShared
