// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/FirstLoad.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <list>
#include <string>

#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/Locks.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/SessionFrame.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "QorviViewPlugin/protocol/UserMessages.h"
#include "ResourceStore/ViewGroupManager.h"
#include "VantBase/Log.h"

namespace QorviViewPlugin {
namespace {

using Vant::Base::details::IOrlFormatLog;

ResourceStore::CViewGroupManager& Downloads() {
  return Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
}

// Nothing may be thrown into the platform's thread: what an observer or want of memory throws ends that one step.
template <class Step>
void Quietly(Step step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

// A document none of whose elements has a number comes from a server that does not count, or begins to count anew.
template <class Info>
void ApplyEach(const std::list<Info>& changes, void (CViewGroupManager::*apply)(const Info&),
               void (CViewGroupManager::*forgetNumbers)()) {
  const auto isNumbered = [](const Info& change) { return change.nChangeNumber != 0; };
  if (std::none_of(changes.begin(), changes.end(), isNumbered)) (Manager().*forgetNumbers)();
  for (const Info& change : changes) Quietly([&] { (Manager().*apply)(change); });
}

void ApplyViewDocument(const std::string& data) {
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]ViewDataResourceUpdate Resource Origian Data : %s[%s(%d)]",
                "ViewDataResourceUpdate", data.c_str(), __FILE__, __LINE__);
  std::string ignoredError;
  ViewTable scratch;
  std::list<ViewInfo> changes;
  if (!Manager().AnalysisViewInitData(data, ignoredError, scratch, changes)) return;
  ApplyEach(changes, &CViewGroupManager::ApplyViewChange, &CViewGroupManager::ForgetViewNumbers);
}

void ApplyViewGroupDocument(const std::string& data) {
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]ViewGroupDataResourceUpdate Resource Origian Data : %s[%s(%d)]",
                "ViewGroupDataResourceUpdate", data.c_str(), __FILE__, __LINE__);
  std::string ignoredError;
  ViewGroupTable scratch;
  std::list<ViewGroupInfo> changes;
  if (!Manager().AnalysisViewGroupInitData(data, ignoredError, scratch, changes)) return;
  ApplyEach(changes, &CViewGroupManager::ApplyViewGroupChange, &CViewGroupManager::ForgetViewGroupNumbers);
}

// Lets change documents through, except while a load is filling the cache: those that arrive meanwhile wait and are
// applied in order by the thread that loaded. Who brings them waits for that thread, lest a flood fill the memory and
// keep it at work for ever; but not for long, since the load itself, or an observer that it calls, may be waiting for
// the bringer's callback to end. m_lock is a leaf lock; nothing is applied under it.
class ChangeGate {
 public:
  using Apply = void (*)(const std::string&);

  void Arrive(Apply apply, const std::string& data) EXCLUDES(m_lock) {
    {
      MutexLock lock(m_lock);
      if (m_loads > 0 || m_draining) m_drained.WaitFor(lock, kPatience);
      if (m_loads > 0 || m_draining) {
        m_waiting.push_back({apply, data});
        return;
      }
    }
    apply(data);
  }

  void BeginLoad() EXCLUDES(m_lock) {
    MutexLock lock(m_lock);
    ++m_loads;
  }

  void EndLoad() EXCLUDES(m_lock) {
    {
      MutexLock lock(m_lock);
      --m_loads;
      // An observer that a waiting change has called may load too: the loop that called it goes on.
      if (m_loads > 0 || m_draining) return;
      m_draining = true;
    }
    Change change;
    while (TakeNext(change)) Quietly([&] { change.apply(change.data); });
  }

 private:
  struct Change {
    Apply apply = nullptr;
    std::string data;
  };

  bool TakeNext(Change& change) EXCLUDES(m_lock) {
    MutexLock lock(m_lock);
    if (m_waiting.empty() || m_loads > 0) {
      m_draining = false;
      m_drained.NotifyAll();
      return false;
    }
    change = std::move(m_waiting.front());
    m_waiting.pop_front();
    return true;
  }

  static constexpr std::chrono::milliseconds kPatience{100};

  Mutex m_lock;
  Condition m_drained;
  int m_loads GUARDED_BY(m_lock) = 0;
  bool m_draining GUARDED_BY(m_lock) = false;
  std::deque<Change> m_waiting GUARDED_BY(m_lock);
};

ChangeGate s_changeGate;
// One load, or clearing, at a time. Held while the cache is filled, never while a callback is set or an observer
// called.
Mutex s_loadLock;
std::atomic<bool> s_bViewGroupInitFinish{false};
std::atomic<bool> s_bViewInitFinish{false};

// Withdraws the change callbacks when the library is unloaded, waiting for a running one. Made as a local static on the
// first registration, so that it is destroyed before everything a callback uses.
struct CallbackWithdrawal {
  ~CallbackWithdrawal() {
    Downloads().SetViewsUpdateCallback(nullptr);
    Downloads().SetViewGroupsUpdateCallback(nullptr);
  }
};

struct LoadInProgress {
  LoadInProgress() { s_changeGate.BeginLoad(); }
  ~LoadInProgress() { s_changeGate.EndLoad(); }
  LoadInProgress(const LoadInProgress&) = delete;
  LoadInProgress& operator=(const LoadInProgress&) = delete;
};

// What tells the two first loads apart.
struct FirstLoad {
  std::atomic<bool>& done;
  void (*setCallback)();
  void (*fetch)(std::string& data);
  void (*logData)(const std::string& data);
  void (CViewGroupManager::*load)(const std::string& data, std::string& cascadingErrorInfo);
};

bool Load(const FirstLoad& kind, const std::string& request, std::string& response) {
  if (kind.done) return true;
  static CallbackWithdrawal withdrawal;
  // Before the callback is set, which waits for a running one: no change is applied beside the load from here on.
  LoadInProgress loading;
  kind.setCallback();
  if (!Downloads().IsViewDownloadSuccess()) return false;

  MutexLock lock(s_loadLock);
  if (kind.done) return true;
  std::string data;
  kind.fetch(data);
  kind.logData(data);
  ReadRequest<protocol::ClienInitViewDataRequest>(request);
  protocol::ClienInitViewDataResponse answer;
  (Manager().*kind.load)(data, answer.error_info);
  kind.done = true;  // also when memory does not suffice for the response: nothing may be loaded twice
  answer.init_finish = true;
  response = WriteResponse(answer);
  return true;
}

constexpr FirstLoad kViewGroupLoad = {
    s_bViewGroupInitFinish, [] { Downloads().SetViewGroupsUpdateCallback(ViewGroupDataResourceUpdate); },
    [](std::string& data) { Downloads().GetViewGroupsData(data); },
    [](const std::string& data) {
      IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]init view_group_message data: %s[%s(%d)]", "IsInitViewGroupFinish",
                    data.c_str(), __FILE__, __LINE__);
    },
    &CViewGroupManager::LoadViewGroups};

constexpr FirstLoad kViewLoad = {s_bViewInitFinish, [] { Downloads().SetViewsUpdateCallback(ViewDataResourceUpdate); },
                                 [](std::string& data) { Downloads().GetViewsData(data); },
                                 [](const std::string& data) {
                                   IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]init view_messgae data: %s[%s(%d)]",
                                                 "IsInitViewFinish", data.c_str(), __FILE__, __LINE__);
                                 },
                                 &CViewGroupManager::LoadViews};

bool LoadQuietly(const FirstLoad& kind, const std::string& request, std::string& response) noexcept {
  try {
    return Load(kind, request, response);
  } catch (...) {
    // Out of memory, for one: not loaded, and the next poll tries again.
    return false;
  }
}

}  // namespace

void ViewDataResourceUpdate(const std::string& data) {
  Quietly([&] { s_changeGate.Arrive(ApplyViewDocument, data); });
}
void ViewGroupDataResourceUpdate(const std::string& data) {
  Quietly([&] { s_changeGate.Arrive(ApplyViewGroupDocument, data); });
}

bool IsViewGroupLoadDone() {
  return s_bViewGroupInitFinish;
}
bool IsViewLoadDone() {
  return s_bViewInitFinish;
}

}  // namespace QorviViewPlugin

bool IsInitViewGroupFinish(const std::string& request, std::string& response) {
  return QorviViewPlugin::LoadQuietly(QorviViewPlugin::kViewGroupLoad, request, response);
}

bool IsInitViewFinish(const std::string& request, std::string& response) {
  return QorviViewPlugin::LoadQuietly(QorviViewPlugin::kViewLoad, request, response);
}

void ClearViewData() {
  using namespace QorviViewPlugin;
  Quietly([] {
    MutexLock lock(s_loadLock);
    s_bViewGroupInitFinish = false;
    s_bViewInitFinish = false;
    Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().UninitManager();
    Manager().ClearViewData();
  });
}
