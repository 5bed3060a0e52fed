// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/FirstLoad.h"

#include <algorithm>
#include <atomic>
#include <list>
#include <optional>
#include <string>

#include "QorviViewPlugin/ChangeGate.h"
#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/Locks.h"
#include "QorviViewPlugin/LogLine.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDownload.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace QorviViewPlugin {
namespace {

// Nothing may be thrown into the platform's thread: want of memory ends that one step. Whether it came to its end.
template <class Step>
bool Quietly(Step step) noexcept {
  try {
    step();
    return true;
  } catch (...) {
    return false;
  }
}

std::atomic<bool> s_bViewGroupInitFinish{false};
std::atomic<bool> s_bViewInitFinish{false};

// Views, or groups, as change documents and the platform's text hold them.
struct ChangeKind {
  bool (*apply)(const std::string& data);    // a change document; whether all of it
  bool (*catchUp)(const std::string& data);  // with the platform's text; likewise
  void (*fetch)(std::string& data);          // that text
  const std::atomic<bool>& isLoaded;
  std::atomic<bool> hasMissed{false};  // want of memory has kept a change from the cache
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

bool ApplyViewDocument(const std::string& data) {
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]ViewDataResourceUpdate Resource Origian Data : %s[%s(%d)]",
                "ViewDataResourceUpdate", data.c_str(), __FILE__, __LINE__);
  std::string ignoredError;
  ViewTable scratch;
  std::list<ViewInfo> changes;
  if (!Manager().AnalysisViewInitData(data, ignoredError, scratch, changes)) return true;
  if (IsUnnumbered(changes)) Manager().ForgetViewNumbers();
  return ApplyEach(changes, &CViewGroupManager::ApplyViewChange);
}

bool ApplyViewGroupDocument(const std::string& data) {
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]ViewGroupDataResourceUpdate Resource Origian Data : %s[%s(%d)]",
                "ViewGroupDataResourceUpdate", data.c_str(), __FILE__, __LINE__);
  std::string ignoredError;
  ViewGroupTable scratch;
  std::list<ViewGroupInfo> changes;
  if (!Manager().AnalysisViewGroupInitData(data, ignoredError, scratch, changes)) return true;
  if (IsUnnumbered(changes)) Manager().ForgetViewGroupNumbers();
  return ApplyEach(changes, &CViewGroupManager::ApplyViewGroupChange);
}

bool CatchUpWithViews(const std::string& data) {
  return ApplyEach(Manager().MissedViewChanges(data), &CViewGroupManager::ApplyViewChange);
}

bool CatchUpWithViewGroups(const std::string& data) {
  return ApplyEach(Manager().MissedViewGroupChanges(data), &CViewGroupManager::ApplyViewGroupChange);
}

ChangeKind s_viewChanges{ApplyViewDocument, CatchUpWithViews,
                         [](std::string& data) { ViewDownload().GetViewsData(data); }, s_bViewInitFinish};
ChangeKind s_viewGroupChanges{ApplyViewGroupDocument, CatchUpWithViewGroups,
                              [](std::string& data) { ViewDownload().GetViewGroupsData(data); },
                              s_bViewGroupInitFinish};

// The platform's text holds every change that was called back. Before the load there is nothing to catch up with: it
// takes that text itself.
void CatchUp(ChangeKind& kind) noexcept {
  if (!kind.isLoaded || !kind.hasMissed.exchange(false)) return;
  bool isDone = false;
  Quietly([&] {
    std::string data;
    kind.fetch(data);
    isDone = kind.catchUp(data);
  });
  if (!isDone) kind.hasMissed = true;
}

void Take(ChangeKind& kind, const std::string& data) noexcept {
  bool isDone = false;
  Quietly([&] { isDone = kind.apply(data); });
  if (!isDone) kind.hasMissed = true;
  CatchUp(kind);
}

ChangeGate s_changeGate;
// One load, or clearing, at a time. Held while the cache is filled, never while a callback is set or an observer
// called.
Mutex s_loadLock;

void Arrive(ChangeKind& kind, TakeChange take, const std::string& data) noexcept {
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

struct LoadInProgress {
  LoadInProgress() { s_changeGate.BeginLoad(); }
  ~LoadInProgress() {
    s_changeGate.EndLoad();
    CatchUp(s_viewGroupChanges);
    CatchUp(s_viewChanges);
  }
  LoadInProgress(const LoadInProgress&) = delete;
  LoadInProgress& operator=(const LoadInProgress&) = delete;
};

// What tells the two first loads apart.
struct FirstLoad {
  const ChangeKind& changes;
  std::atomic<bool>& done;                // and answered
  std::optional<std::string>& errorText;  // of a load that is done and not answered yet; guarded by s_loadLock
  void (*setCallback)();
  void (*logData)(const std::string& data);
  void (CViewGroupManager::*load)(const std::string& data, std::string& cascadingErrorInfo);
};

bool Load(const FirstLoad& kind, const std::string& request, std::string& response) {
  if (kind.done) return true;
  static CallbackWithdrawal withdrawal;
  // Before the callback is set, which waits for a running one: no change is applied beside the load from here on.
  LoadInProgress loading;
  kind.setCallback();
  if (!ViewDownload().IsViewDownloadSuccess()) return false;

  MutexLock lock(s_loadLock);
  if (kind.done) return true;
  ReadRequest<protocol::ClienInitViewDataRequest>(request);
  // Where memory does not suffice for the response, the next poll gives it: nothing may be loaded twice.
  if (!kind.errorText) {
    std::string data;
    kind.changes.fetch(data);
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
  kind.done = true;
  return true;
}

std::optional<std::string> s_viewGroupErrorText;
std::optional<std::string> s_viewErrorText;

const FirstLoad kViewGroupLoad = {s_viewGroupChanges,
                                  s_bViewGroupInitFinish,
                                  s_viewGroupErrorText,
                                  [] { ViewDownload().SetViewGroupsUpdateCallback(ViewGroupDataResourceUpdate); },
                                  [](const std::string& data) {
                                    IOrlFormatLog(kInfoLevel, kInfoModule,
                                                  "[%s]init view_group_message data: %s[%s(%d)]",
                                                  "IsInitViewGroupFinish", data.c_str(), __FILE__, __LINE__);
                                  },
                                  &CViewGroupManager::LoadViewGroups};

const FirstLoad kViewLoad = {s_viewChanges,
                             s_bViewInitFinish,
                             s_viewErrorText,
                             [] { ViewDownload().SetViewsUpdateCallback(ViewDataResourceUpdate); },
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
  Arrive(
      s_viewChanges, [](const std::string& change) noexcept { Take(s_viewChanges, change); }, data);
}
void ViewGroupDataResourceUpdate(const std::string& data) {
  Arrive(
      s_viewGroupChanges, [](const std::string& change) noexcept { Take(s_viewGroupChanges, change); }, data);
}

void EnsureLoaded() {
  WaitForViewDownload();
  std::string ignoredResponse;
  LoadQuietly(kViewGroupLoad, {}, ignoredResponse);
  LoadQuietly(kViewLoad, {}, ignoredResponse);
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
    s_viewGroupErrorText.reset();
    s_viewErrorText.reset();
    Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().UninitManager();
    Manager().ClearViewData();
  });
}
