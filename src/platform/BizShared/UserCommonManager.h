// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "BizShared/Export.h"
#include "VantBase/Error.h"
#include "VantBase/Singleton.h"

namespace BizShared {
class CUserCommonManager;
}
extern template class BIZSHARED_TEMPLATE_API Vant::Base::CSingleton<BizShared::CUserCommonManager>;

namespace BizShared {

// Who is logged in. Any thread. In a child by fork (NetCommManager.h) nobody can log in or out.
class BIZSHARED_API CUserCommonManager : public Vant::Base::CSingleton<CUserCommonManager> {
 public:
  ~CUserCommonManager();

  // False, and the output untouched, while nobody is logged in.
  bool GetUserID(int& id);
  bool GetUserInfo(int& id, std::string& name);

  // Host set-up. Logs in at the transport's server and keeps the name and password, so that a session the server no
  // longer knows (101/2) is renewed once and the refused request repeated. On failure `error` says why and nobody is
  // logged in.
  bool Login(const std::string& userName, const std::string& password, const std::string& clientName,
             Vant::Base::Error::ErrorCode& error);
  // Ends the session on the server as far as it can be reached; nobody is logged in afterwards.
  void Logout();

  // Seam for tests: makes this the current user without a server.
  void SetUser(int id, const std::string& name);

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CUserCommonManager();
  class Impl;
  std::shared_ptr<Impl> m_impl;
};

}  // namespace BizShared
