// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/FirstLoad.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <optional>
#include <string>

#include "QorviViewPlugin/ChangeGate.h"
#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDownload.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "QorviViewPlugin/base/Locks.h"
#include "QorviViewPlugin/base/LogLine.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace QorviViewPlugin {
namespace {

// Runs a step and answers whether it came to its end. Nothing may be thrown into the platform's thread: want of memory
// ends that one step.
template <class Step>
bool Quietly(Step step) noexcept {
  return Guarded(false, [&step] {
    step();
    return true;
  });
}

std::atomic<bool> s_bViewGroupInitFinish{false};
std::atomic<bool> s_bViewInitFinish{false};

// What tells views from groups. `apply` puts one change document into the cache. `fetch` gets the platform's whole
// list. `catchUp` applies what is newer in that list than in the cache. `apply` and `catchUp` answer false when want of
// memory left something out. The next three serve the first load.
struct CachedKind {
  bool (*apply)(const std::string& data);
  bool (*catchUp)(const std::string& data);
  void (*fetch)(std::string& data);
  void (*setCallback)();
  void (*logData)(const std::string& data);
  void (CViewGroupManager::*load)(const std::string& data, std::string& cascadingErrorInfo);
  std::atomic<bool>& isLoaded;         // the load has been made and its response written
  std::atomic<bool> hasMissed{false};  // want of memory has kept a change from the cache
  // Of a load whose response is still to be written; guarded by s_loadLock.
  std::optional<std::string> errorText = std::nullopt;
};

template <class Info>
bool ApplyEach(const std::list<Info>& changes, void (CViewGroupManager::*apply)(const Info&)) {
  bool areApplied = true;
  for (const Info& change : changes) areApplied &= Quietly([&] { (Manager().*apply)(change); });
  return areApplied;
}

// A document none of whose elements has a number comes from a server that does not count, or begins to count anew.
template <class Info>
bool IsUnnumbered(const std::list<Info>& changes) {
  return std::none_of(changes.begin(), changes.end(), [](const Info& change) { return change.nChangeNumber != 0; });
}

template <class Table, class Info>
bool ApplyDocument(const std::string& data,
                   bool (CViewGroupManager::*read)(const std::string&, std::string&, Table&, std::list<Info>&),
                   void (CViewGroupManager::*forgetNumbers)(), void (CViewGroupManager::*apply)(const Info&)) {
  std::string ignoredError;
  Table scratch;
  std::list<Info> changes;
  if (!(Manager().*read)(data, ignoredError, scratch, changes)) return true;
  if (IsUnnumbered(changes)) (Manager().*forgetNumbers)();
  return ApplyEach(changes, apply);
}

bool ApplyViewDocument(const std::string& data) {
  QORVI_LOG_INFO("ViewDataResourceUpdate", "ViewDataResourceUpdate Resource Origian Data : %s", data.c_str());
  return ApplyDocument(data, &CViewGroupManager::AnalysisViewInitData, &CViewGroupManager::ForgetViewNumbers,
                       &CViewGroupManager::ApplyViewChange);
}

bool ApplyViewGroupDocument(const std::string& data) {
  QORVI_LOG_INFO("ViewGroupDataResourceUpdate", "ViewGroupDataResourceUpdate Resource Origian Data : %s", data.c_str());
  return ApplyDocument(data, &CViewGroupManager::AnalysisViewGroupInitData, &CViewGroupManager::ForgetViewGroupNumbers,
                       &CViewGroupManager::ApplyViewGroupChange);
}

bool CatchUpWithViews(const std::string& data) {
  return ApplyEach(Manager().MissedViewChanges(data), &CViewGroupManager::ApplyViewChange);
}

bool CatchUpWithViewGroups(const std::string& data) {
  return ApplyEach(Manager().MissedViewGroupChanges(data), &CViewGroupManager::ApplyViewGroupChange);
}

CachedKind s_views{
    ApplyViewDocument,
    CatchUpWithViews,
    [](std::string& data) { ViewDownload().GetViewsData(data); },
    [] { ViewDownload().SetViewsUpdateCallback(ViewDataResourceUpdate); },
    [](const std::string& data) { QORVI_LOG_INFO("IsInitViewFinish", "init view_messgae data: %s", data.c_str()); },
    &CViewGroupManager::LoadViews,
    s_bViewInitFinish};

CachedKind s_viewGroups{ApplyViewGroupDocument,
                        CatchUpWithViewGroups,
                        [](std::string& data) { ViewDownload().GetViewGroupsData(data); },
                        [] { ViewDownload().SetViewGroupsUpdateCallback(ViewGroupDataResourceUpdate); },
                        [](const std::string& data) {
                          QORVI_LOG_INFO("IsInitViewGroupFinish", "init view_group_message data: %s", data.c_str());
                        },
                        &CViewGroupManager::LoadViewGroups,
                        s_bViewGroupInitFinish};

// Applies the changes that were missed. They are in the platform's list, which holds every change that was called back.
// Before the load nothing is missed, since the load reads that list itself.
void CatchUp(CachedKind& kind) noexcept {
  if (!kind.isLoaded || !kind.hasMissed.exchange(false)) return;
  const bool isDone = Guarded(false, [&kind] {
    std::string data;
    kind.fetch(data);
    return kind.catchUp(data);
  });
  if (!isDone) kind.hasMissed = true;
}

void Take(CachedKind& kind, const std::string& data) noexcept {
  if (!Guarded(false, [&] { return kind.apply(data); })) kind.hasMissed = true;
  CatchUp(kind);
}

ChangeGate s_changeGate;
// Lets one load, or clearing, run at a time. Held while the cache is filled, never while a callback is set or an
// observer is called.
Mutex s_loadLock;

void Arrive(CachedKind& kind, TakeChange take, const std::string& data) noexcept {
  if (!Quietly([&] { s_changeGate.Arrive(take, data); })) kind.hasMissed = true;
}

// Withdraws the change callbacks when the library is unloaded, waiting for a running one. Made as a local static on the
// first registration, so that it is destroyed before everything a callback uses.
struct CallbackWithdrawal {
  ~CallbackWithdrawal() {
    ViewDownload().SetViewsUpdateCallback(nullptr);
    ViewDownload().SetViewGroupsUpdateCallback(nullptr);
  }
};

// Changes wait at the gate while one exists.
struct LoadInProgress {
  LoadInProgress() { s_changeGate.BeginLoad(); }
  ~LoadInProgress() {
    s_changeGate.EndLoad();
    CatchUp(s_viewGroups);
    CatchUp(s_views);
  }
  LoadInProgress(const LoadInProgress&) = delete;
  LoadInProgress& operator=(const LoadInProgress&) = delete;
};

bool Load(CachedKind& kind, const std::string& request, std::string& response) {
  if (kind.isLoaded) return true;
  static CallbackWithdrawal withdrawal;
  // Before the callback is set, which waits for a running one: no change is applied beside the load from here on.
  LoadInProgress loading;
  kind.setCallback();
  if (!ViewDownload().IsViewDownloadSuccess()) return false;

  MutexLock lock(s_loadLock);
  if (kind.isLoaded) return true;
  ReadRequest<protocol::ClienInitViewDataRequest>(request);
  // Where memory does not suffice for the response, the next poll gives it without loading again.
  if (!kind.errorText) {
    std::string data;
    kind.fetch(data);
    kind.logData(data);
    std::string errorText;
    (Manager().*kind.load)(data, errorText);
    kind.errorText = std::move(errorText);
  }
  protocol::ClienInitViewDataResponse answer;
  answer.error_info = *kind.errorText;
  answer.init_finish = true;
  response = WriteResponse(answer);
  kind.errorText.reset();
  kind.isLoaded = true;
  return true;
}

// A load that fails, for want of memory for one, has not been made: the next poll tries again.
bool LoadQuietly(CachedKind& kind, const std::string& request, std::string& response) noexcept {
  return Guarded(false, [&] { return Load(kind, request, response); });
}

}  // namespace

void ViewDataResourceUpdate(const std::string& data) {
  Arrive(
      s_views, [](const std::string& change) noexcept { Take(s_views, change); }, data);
}
void ViewGroupDataResourceUpdate(const std::string& data) {
  Arrive(
      s_viewGroups, [](const std::string& change) noexcept { Take(s_viewGroups, change); }, data);
}

void EnsureLoaded() {
  WaitForViewDownload();
  std::string ignoredResponse;
  LoadQuietly(s_viewGroups, {}, ignoredResponse);
  LoadQuietly(s_views, {}, ignoredResponse);
}

bool IsViewGroupLoadDone() {
  return s_bViewGroupInitFinish;
}
bool IsViewLoadDone() {
  return s_bViewInitFinish;
}

}  // namespace QorviViewPlugin

bool IsInitViewGroupFinish(const std::string& request, std::string& response) {
  return QorviViewPlugin::LoadQuietly(QorviViewPlugin::s_viewGroups, request, response);
}

bool IsInitViewFinish(const std::string& request, std::string& response) {
  return QorviViewPlugin::LoadQuietly(QorviViewPlugin::s_views, request, response);
}

void ClearViewData() {
  using namespace QorviViewPlugin;
  Quietly([] {
    MutexLock lock(s_loadLock);
    for (CachedKind* kind : {&s_viewGroups, &s_views}) {
      kind->isLoaded = false;
      kind->errorText.reset();
    }
    Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().UninitManager();
    Manager().ClearViewData();
  });
}
