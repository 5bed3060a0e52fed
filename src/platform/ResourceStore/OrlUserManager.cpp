// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/OrlUserManager.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
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

template class Vant::Base::CSingleton<ResourceStore::COrlUserManager>;

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

// m_mutex guards everything and is not held across notifications.
template <class Observed, class Observer>
class CObserverableWrap<Observed, Observer>::Impl {
 public:
  struct RunningCall {
    Observer* observer;
    std::thread::id thread;
  };
  std::mutex m_mutex;
  std::condition_variable m_callEnded;
  std::vector<Observer*> m_observers;
  std::vector<RunningCall> m_running;
};

template <class Observed, class Observer>
CObserverableWrap<Observed, Observer>::CObserverableWrap() : m_observers(std::make_unique<Impl>()) {}
template <class Observed, class Observer>
CObserverableWrap<Observed, Observer>::~CObserverableWrap() {
  if (BizShared::details::IsForkedChild()) BizShared::details::LeaveToParent(m_observers);
}

template <class Observed, class Observer>
void CObserverableWrap<Observed, Observer>::RegisterObserver(Observer* observer) {
  std::lock_guard<std::mutex> lock(m_observers->m_mutex);
  auto& observers = m_observers->m_observers;
  if (observer && std::find(observers.begin(), observers.end(), observer) == observers.end()) {
    observers.push_back(observer);
  }
}

template <class Observed, class Observer>
void CObserverableWrap<Observed, Observer>::SyncUnregisterObserver(Observer* observer) {
  if (BizShared::details::IsForkedChild()) {
    // The threads that notify, and may hold the lock, are the parent's.
    std::unique_lock<std::mutex> lock(m_observers->m_mutex, std::try_to_lock);
    if (lock) std::erase(m_observers->m_observers, observer);
    return;
  }
  std::unique_lock<std::mutex> lock(m_observers->m_mutex);
  std::erase(m_observers->m_observers, observer);
  m_observers->m_callEnded.wait(lock, [&] {
    return std::none_of(m_observers->m_running.begin(), m_observers->m_running.end(), [&](const auto& call) {
      return call.observer == observer && call.thread != std::this_thread::get_id();
    });
  });
}

template <class Observed, class Observer>
std::vector<Observer*> CObserverableWrap<Observed, Observer>::Observers() const {
  std::lock_guard<std::mutex> lock(m_observers->m_mutex);
  return m_observers->m_observers;
}

template <class Observed, class Observer>
bool CObserverableWrap<Observed, Observer>::BeginNotify(Observer* observer) {
  std::lock_guard<std::mutex> lock(m_observers->m_mutex);
  auto& observers = m_observers->m_observers;
  if (std::find(observers.begin(), observers.end(), observer) == observers.end()) return false;
  m_observers->m_running.push_back({observer, std::this_thread::get_id()});
  return true;
}

template <class Observed, class Observer>
void CObserverableWrap<Observed, Observer>::EndNotify(Observer* observer) {
  std::lock_guard<std::mutex> lock(m_observers->m_mutex);
  auto& running = m_observers->m_running;
  running.erase(std::find_if(running.begin(), running.end(), [&](const auto& call) {
    return call.observer == observer && call.thread == std::this_thread::get_id();
  }));
  m_observers->m_callEnded.notify_all();
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

// One thread, started by the first download, serves all. m_mutex guards everything below it and is held neither while
// downloading nor while notifying.
class COrlUserManager::Impl {
 public:
  explicit Impl(COrlUserManager& manager) : m_manager(manager) {}
  ~Impl() { End(); }

  void Request() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ended) return;
    ++m_requests;
    m_changed.notify_all();
    if (!m_thread.joinable()) m_thread = std::thread([this] { Run(); });
  }

  void RefuseForkedChild() { NotifyAll(CIOrlUserObserverParam::Failed, BizShared::details::ForkedChildError()); }

  void End() {
    if (BizShared::details::IsForkedChild()) return;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_ended = true;
      m_changed.notify_all();
    }
    m_canceller.Cancel();
    if (!m_thread.joinable()) return;
    // The process may be ending from within a notification.
    if (m_thread.get_id() == std::this_thread::get_id()) {
      m_thread.detach();
    } else {
      m_thread.join();
    }
  }

  Users CurrentUsers() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_users;
  }

  void Fix(std::optional<FixedDownload> download) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_fixed = std::move(download);
  }

 private:
  // A request that comes during a download starts another one after it, so that its notification tells of what the
  // server said after the request.
  void Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    uint64_t served = 0;
    while (true) {
      m_changed.wait(lock, [&] { return m_ended || m_requests != served; });
      if (m_ended) return;
      served = m_requests;
      lock.unlock();
      Users users;
      ErrorCode error;
      bool succeeded = false;
      try {
        succeeded = Download(users, error);
      } catch (...) {
        error = ErrorCode(1, 27, 0, {});  // want of memory, as the transport says it
      }
      lock.lock();
      if (m_ended) return;
      if (succeeded) m_users = std::move(users);
      lock.unlock();
      NotifyAll(succeeded ? CIOrlUserObserverParam::Succeeded : CIOrlUserObserverParam::Failed,
                succeeded ? ErrorCode() : error);
      lock.lock();
    }
  }

  bool Download(Users& users, ErrorCode& error) {
    std::optional<FixedDownload> fixed;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
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
      std::unique_lock<std::mutex> lock(m_mutex);
      if (m_changed.wait_for(lock, std::chrono::milliseconds(10), [&] { return m_ended; })) return false;
    }
  }

  COrlUserManager& m_manager;
  BizShared::details::CCanceller m_canceller;
  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_ended = false;
  uint64_t m_requests = 0;
  Users m_users;
  std::optional<FixedDownload> m_fixed;
  std::thread m_thread;
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
template class ResourceStore::CObserverableWrap<ResourceStore::COrlUserManager, ResourceStore::IOrlUserObserver>;
