// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/OrlUserManager.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <optional>
#include <thread>
#include <utility>

#include "BizShared/NetCommManager.h"
#include "BizShared/details/Canceller.h"
#include "BizShared/details/Process.h"
#include "BizShared/details/Reply.h"
#include "BizShared/details/ServerRequest.h"
#include "NetLink/RapidJsonProto.h"
#include "VantBase/Log.h"
#include "VantBase/SingletonImpl.h"
#include "base/Mutex.h"

template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<ResourceStore::COrlUserManager>;

namespace ResourceStore {

using Vant::Base::Error::ErrorCode;
using Users = std::vector<std::shared_ptr<CUserInfo>>;

CUserInfo::CUserInfo(int64_t id, const std::string& name, bool online, int ptzControlPermission)
    : m_id(id), m_name(name), m_online(online), m_ptzControlPermission(ptzControlPermission) {}
CUserInfo::~CUserInfo() = default;

int64_t CUserInfo::GetVal_m_userID() const {
  return m_id;
}
std::string CUserInfo::GetVal_m_strUsername() const {
  return m_name;
}
bool CUserInfo::GetVal_b_cs_online() const {
  return m_online;
}
int CUserInfo::GetVal_ptz_control_perm() const {
  return m_ptzControlPermission;
}

CIOrlUserObserverParam::CIOrlUserObserverParam(State state, const ErrorCode& error) : m_state(state), m_error(error) {}
CIOrlUserObserverParam::~CIOrlUserObserverParam() = default;

CIOrlUserObserverParam::State CIOrlUserObserverParam::GetVal_enumState() const {
  return m_state;
}
ErrorCode CIOrlUserObserverParam::GetVal_stru_error_code() const {
  return m_error;
}

// The lock is not held across notifications.
template <class Observed, class Observer>
class CObserverableWrap<Observed, Observer>::Impl {
 public:
  struct RunningCall {
    Observer* observer;
    std::thread::id thread;
  };
  base::Mutex m_mutex;
  base::Condition m_callEnded;
  std::vector<Observer*> m_observers GUARDED_BY(m_mutex);
  std::vector<RunningCall> m_running GUARDED_BY(m_mutex);
};

template <class Observed, class Observer>
CObserverableWrap<Observed, Observer>::CObserverableWrap() : m_observers(std::make_unique<Impl>()) {}
template <class Observed, class Observer>
CObserverableWrap<Observed, Observer>::~CObserverableWrap() {
  if (BizShared::details::IsForkedChild()) BizShared::details::LeaveToParent(m_observers);
}

template <class Observed, class Observer>
void CObserverableWrap<Observed, Observer>::RegisterObserver(Observer* observer) {
  base::MutexLock lock(m_observers->m_mutex);
  auto& observers = m_observers->m_observers;
  if (observer && std::find(observers.begin(), observers.end(), observer) == observers.end()) {
    observers.push_back(observer);
  }
}

template <class Observed, class Observer>
void CObserverableWrap<Observed, Observer>::SyncUnregisterObserver(Observer* observer) {
  if (BizShared::details::IsForkedChild()) {
    // The threads that notify, and may hold the lock, are the parent's.
    if (!m_observers->m_mutex.TryLock()) return;
    std::erase(m_observers->m_observers, observer);
    m_observers->m_mutex.Unlock();
    return;
  }
  base::MutexLock lock(m_observers->m_mutex);
  std::erase(m_observers->m_observers, observer);
  m_observers->m_callEnded.Wait(lock, [&]() REQUIRES(m_observers->m_mutex) {
    return std::none_of(m_observers->m_running.begin(), m_observers->m_running.end(), [&](const auto& call) {
      return call.observer == observer && call.thread != std::this_thread::get_id();
    });
  });
}

template <class Observed, class Observer>
std::vector<Observer*> CObserverableWrap<Observed, Observer>::Observers() const {
  base::MutexLock lock(m_observers->m_mutex);
  return m_observers->m_observers;
}

template <class Observed, class Observer>
bool CObserverableWrap<Observed, Observer>::BeginNotify(Observer* observer) {
  base::MutexLock lock(m_observers->m_mutex);
  auto& observers = m_observers->m_observers;
  if (std::find(observers.begin(), observers.end(), observer) == observers.end()) return false;
  m_observers->m_running.push_back({observer, std::this_thread::get_id()});
  return true;
}

template <class Observed, class Observer>
void CObserverableWrap<Observed, Observer>::EndNotify(Observer* observer) {
  base::MutexLock lock(m_observers->m_mutex);
  auto& running = m_observers->m_running;
  running.erase(std::find_if(running.begin(), running.end(), [&](const auto& call) {
    return call.observer == observer && call.thread == std::this_thread::get_id();
  }));
  m_observers->m_callEnded.NotifyAll();
}

namespace {

struct FixedDownload {
  Users users;
  ErrorCode error;
};

Users ReadUsers(const NetLink::CRapidJsonProto& reply) {
  Users users;
  BizShared::details::ForEachElement(reply, "UserList/User", [&](const std::string& path) {
    users.push_back(std::make_shared<CUserInfo>(reply.get_int_v(path + "ID", -1), reply.get_v(path + "Name", ""),
                                                reply.get_int_v(path + "Online", 0) != 0,
                                                reply.get_int_v(path + "PTZControlPermission", -1)));
  });
  return users;
}

bool FetchUsers(BizShared::details::CCanceller& canceller, Users& users, ErrorCode& error) {
  BizShared::details::RequestContext context;
  context.canceller = &canceller;
  NetLink::CRapidJsonProto reply;
  if (!BizShared::details::Ask(BizShared::details::GetRequest("V0/Users"), context, reply, error)) return false;
  users = ReadUsers(reply);
  return true;
}

}  // namespace

// One thread, started by the first download, serves all. The lock is held neither while downloading nor while
// notifying.
class COrlUserManager::Impl {
 public:
  explicit Impl(COrlUserManager& manager) : m_manager(manager) {}
  ~Impl() { End(); }

  void Request() {
    base::MutexLock lock(m_mutex);
    if (m_ended) return;
    ++m_requests;
    m_changed.NotifyAll();
    if (!m_thread.joinable()) m_thread = std::thread([this] { Run(); });
  }

  void RefuseForkedChild() { NotifyAll(CIOrlUserObserverParam::Failed, BizShared::details::ForkedChildError()); }

  void End() {
    if (BizShared::details::IsForkedChild()) return;
    std::thread thread;
    {
      base::MutexLock lock(m_mutex);
      m_ended = true;
      m_changed.NotifyAll();
      thread.swap(m_thread);
    }
    m_canceller.Cancel();
    if (!thread.joinable()) return;
    // The process may be ending from within a notification.
    if (thread.get_id() == std::this_thread::get_id()) {
      thread.detach();
    } else {
      thread.join();
    }
  }

  Users CurrentUsers() const {
    base::MutexLock lock(m_mutex);
    return m_users;
  }

  void Fix(std::optional<FixedDownload> download) {
    base::MutexLock lock(m_mutex);
    m_fixed = std::move(download);
  }

 private:
  // A request that comes during a download starts another one after it, so that its notification tells of what the
  // server said after the request.
  void Run() {
    base::MutexLock lock(m_mutex);
    uint64_t served = 0;
    while (true) {
      m_changed.Wait(lock, [&]() REQUIRES(m_mutex) { return m_ended || m_requests != served; });
      if (m_ended) return;
      served = m_requests;
      lock.Unlock();
      Users users;
      ErrorCode error;
      bool succeeded = false;
      try {
        succeeded = Download(users, error);
      } catch (...) {
        error = ErrorCode(1, 27, 0, {});  // want of memory, as the transport says it
      }
      lock.Lock();
      if (m_ended) return;
      if (succeeded) m_users = std::move(users);
      lock.Unlock();
      NotifyAll(succeeded ? CIOrlUserObserverParam::Succeeded : CIOrlUserObserverParam::Failed,
                succeeded ? ErrorCode() : error);
      lock.Lock();
    }
  }

  bool Download(Users& users, ErrorCode& error) {
    std::optional<FixedDownload> fixed;
    {
      base::MutexLock lock(m_mutex);
      fixed = m_fixed;
    }
    if (!fixed) return FetchUsers(m_canceller, users, error);
    users = fixed->users;
    error = fixed->error;
    return error.GetSubError() == 0;
  }

  void NotifyAll(CIOrlUserObserverParam::State state, const ErrorCode& error) {
    std::vector<IOrlUserObserver*> observers;
    if (!OnceThereIsMemory([&] { observers = m_manager.Observers(); })) return;
    for (IOrlUserObserver* observer : observers) {
      bool isRegistered = false;
      std::optional<CIOrlUserObserverParam> param;
      const auto begin = [&] {
        param.emplace(state, error);
        isRegistered = m_manager.BeginNotify(observer);
      };
      if (!OnceThereIsMemory(begin)) return;
      if (!isRegistered) continue;
      try {
        observer->OnUserListNotify(*param);
      } catch (...) {
        Vant::Base::details::IOrlFormatLog(4, "Platform", "An observer of the users threw an exception");
      }
      m_manager.EndNotify(observer);
    }
  }

  // Whoever waits must hear of the end. False when the manager ended first.
  template <class Step>
  bool OnceThereIsMemory(Step step) {
    while (true) {
      try {
        step();
        return true;
      } catch (const std::bad_alloc&) {
      }
      base::MutexLock lock(m_mutex);
      if (m_changed.WaitFor(lock, std::chrono::milliseconds(10), [&]() REQUIRES(m_mutex) { return m_ended; }))
        return false;
    }
  }

  COrlUserManager& m_manager;
  BizShared::details::CCanceller m_canceller;
  mutable base::Mutex m_mutex;
  base::Condition m_changed;
  bool m_ended GUARDED_BY(m_mutex) = false;
  uint64_t m_requests GUARDED_BY(m_mutex) = 0;
  Users m_users GUARDED_BY(m_mutex);
  std::optional<FixedDownload> m_fixed GUARDED_BY(m_mutex);
  std::thread m_thread GUARDED_BY(m_mutex);
};

COrlUserManager::COrlUserManager() : m_impl(std::make_unique<Impl>(*this)) {}
COrlUserManager::~COrlUserManager() {
  if (BizShared::details::IsForkedChild()) BizShared::details::LeaveToParent(m_impl);
}

void COrlUserManager::StartDownLoadOrlUser() {
  if (!BizShared::details::ClaimProcess()) return m_impl->RefuseForkedChild();
  // Made after the transport, so that the thread has ended when the transport's library cleans up.
  BizShared::CNetCommManager::Instance();
  struct EndAtExit {
    ~EndAtExit() { impl->End(); }
    Impl* impl;
  };
  static EndAtExit endAtExit{m_impl.get()};
  m_impl->Request();
}

void COrlUserManager::GetOrlUsers(Users& users) const {
  users = m_impl->CurrentUsers();
}

void COrlUserManager::SetDownload(const Users& users, const ErrorCode& error) {
  m_impl->Fix(FixedDownload{users, error});
}

void COrlUserManager::ResetDownload() {
  m_impl->Fix(std::nullopt);
}

}  // namespace ResourceStore

// At the end: only members that are defined by then are instantiated.
template class QORVI_EXPORT_DEFINED
    ResourceStore::CObserverableWrap<ResourceStore::COrlUserManager, ResourceStore::IOrlUserObserver>;
