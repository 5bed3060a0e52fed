// SPDX-License-Identifier: Apache-2.0
// The server's users, their download, and the observers of it, which are kept here.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ResourceStore/Export.h"
#include "VantBase/BaseObserver.h"
#include "VantBase/Error.h"
#include "VantBase/Singleton.h"

namespace ResourceStore {
class COrlUserManager;
}
extern template class RESOURCESTORE_TEMPLATE_API Vant::Base::CSingleton<ResourceStore::COrlUserManager>;

namespace ResourceStore {

// A user of the server; immutable once made.
class RESOURCESTORE_API CUserInfo {
 public:
  CUserInfo(int64_t id, const std::string& name, bool online, int ptzControlPermission);
  ~CUserInfo();

  int64_t GetVal_m_userID() const;
  std::string GetVal_m_strUsername() const;
  bool GetVal_b_cs_online() const;
  int GetVal_ptz_control_perm() const;

 private:
  int64_t m_id;
  std::string m_name;
  bool m_online;
  int m_ptzControlPermission;
};

// How a download of the users ended.
class RESOURCESTORE_API CIOrlUserObserverParam {
 public:
  enum State : int { Succeeded = 0, Failed = 1 };

  CIOrlUserObserverParam(State state, const Vant::Base::Error::ErrorCode& error);
  ~CIOrlUserObserverParam();

  State GetVal_enumState() const;  // 0 is success
  Vant::Base::Error::ErrorCode GetVal_stru_error_code() const;

 private:
  State m_state;
  Vant::Base::Error::ErrorCode m_error;
};

class IOrlUserObserver : public Vant::Base::IBaseObserver {
 public:
  // Called on the download's thread when a download has ended; the users are in place by then.
  virtual void OnUserListNotify(CIOrlUserObserverParam& param) = 0;

 protected:
  ~IOrlUserObserver() = default;
};

// Registration of observers. Any thread. The observer is not owned.
template <class Observed, class Observer>
class CObserverableWrap {
 public:
  void RegisterObserver(Observer* observer);
  // Withdraws the observer and waits until a running notification of it has returned, unless called from within it.
  void SyncUnregisterObserver(Observer* observer);

 protected:
  CObserverableWrap();
  ~CObserverableWrap();
  // The observers registered at this moment. To notify one without a lock held: BeginNotify, call, EndNotify, on one
  // thread; SyncUnregisterObserver of that observer waits meanwhile. BeginNotify is false, and no EndNotify follows,
  // when the observer was withdrawn.
  std::vector<Observer*> Observers() const;
  bool BeginNotify(Observer* observer);
  void EndNotify(Observer* observer);

 private:
  class Impl;
  std::unique_ptr<Impl> m_observers;
};

}  // namespace ResourceStore

extern template class RESOURCESTORE_TEMPLATE_API
    ResourceStore::CObserverableWrap<ResourceStore::COrlUserManager, ResourceStore::IOrlUserObserver>;

namespace ResourceStore {

// Downloads the server's users on a thread of its own. Any thread.
class RESOURCESTORE_API COrlUserManager : public Vant::Base::CSingleton<COrlUserManager>,
                                          public CObserverableWrap<COrlUserManager, IOrlUserObserver> {
 public:
  ~COrlUserManager();

  // Starts a download. Every call is followed by a notification sent after the call, failures included. In a child by
  // fork (NetCommManager.h) it fails, and is notified from within the call.
  void StartDownLoadOrlUser();
  // The users of the last download that succeeded, in the server's order.
  void GetOrlUsers(std::vector<std::shared_ptr<CUserInfo>>& users) const;

  // Seam for tests: the next downloads end with these users, or with this error where its sub error is not 0, without
  // a server, still on the download's thread. ResetDownload restores the server.
  void SetDownload(const std::vector<std::shared_ptr<CUserInfo>>& users, const Vant::Base::Error::ErrorCode& error);
  void ResetDownload();

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  COrlUserManager();
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace ResourceStore
