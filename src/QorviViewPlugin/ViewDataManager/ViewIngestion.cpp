// SPDX-License-Identifier: Apache-2.0
// How the manager reads downloaded data and change documents.
#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/ViewDataManager/SessionFrame.h"
#include "QorviViewPlugin/ViewDataManager/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDataManager/ViewList.h"
#include "VantBase/Log.h"

namespace QorviViewPlugin {
namespace {

struct EnvelopeTexts {
  const char* function;
  const char* refused;
};

void LogRefused(const EnvelopeTexts& texts, const ErrorCode& error) {
  Vant::Base::details::IOrlFormatLog(kErrorLevel, kErrorModule, texts.refused, texts.function, error.GetSubError(),
                                     __FILE__, __LINE__);
}

// Whether a window of that type shows an element that the platform does not know.
bool ShowsUnknownElement(const ViewInfo& view, int type) {
  for (const ViewPage& page : view.vcPages) {
    for (const CameraGridStruct& window : page.vcWindows) {
      if (window.enum_resource_type_ == type && !IsElementKnown(type, window.id_element_)) return true;
    }
  }
  return false;
}

}  // namespace

bool CViewGroupManager::AnalysisViewGroupInitData(const std::string& data, std::string& cascadingErrorInfo,
                                                  ViewGroupTable& groups, std::list<ViewGroupInfo>& changes) {
  static constexpr EnvelopeTexts kTexts = {"QorviViewPlugin::CViewGroupManager::AnalysisViewGroupInitData",
                                           "[%s]AnalysisViewGroupInitData_Error:%d[%s(%d)]"};
  if (data.empty()) return true;
  NetLink::CRapidJsonProto document;
  document.set_str(data);
  ErrorCode error;
  const bool isUsable = ReadResponseStatus(document, CascadingText::Kept, error);
  cascadingErrorInfo = error.GetCasadingErrorInfo();
  if (!isUsable) {
    LogRefused(kTexts, error);
    return false;
  }
  PathCursor at(document, "/ResponseStatus/Data/ViewGroupList/");
  const int count = at.Count("ViewGroup");
  for (int n = 1; n <= count; ++n) {
    const auto level = at.Enter("ViewGroup", n);
    ViewGroupInfo group = ReadViewGroup(at, DocumentOrigin::Download);
    groups.emplace(group.idViewGroup, std::make_shared<CViewGroup>(group));
    changes.push_back(std::move(group));
  }
  return true;
}

bool CViewGroupManager::AnalysisViewInitData(const std::string& data, std::string& cascadingErrorInfo, ViewTable& views,
                                             std::list<ViewInfo>& changes) {
  std::vector<std::shared_ptr<CView>> read;
  if (!ReadViews(data, cascadingErrorInfo, read, &changes)) return false;
  Joining members = MembersOf(read);
  for (const auto& view : read) views.emplace(view->GetID(), view);
  JoinGroups(std::move(members));
  return true;
}

bool CViewGroupManager::ReadViews(const std::string& data, std::string& cascadingErrorInfo,
                                  std::vector<std::shared_ptr<CView>>& views, std::list<ViewInfo>* changes) {
  static constexpr EnvelopeTexts kTexts = {"QorviViewPlugin::CViewGroupManager::AnalysisViewInitData",
                                           "[%s]AnalysisViewInitData_Error:%d[%s(%d)]"};
  ErrorCode error;
  std::vector<ViewInfo> read;
  const bool isUsable = ReadViewList(data, error, read);
  cascadingErrorInfo = error.GetCasadingErrorInfo();
  if (!isUsable) {
    LogRefused(kTexts, error);
    return false;
  }
  PendingChecks pending;
  views.reserve(read.size());
  for (ViewInfo& info : read) {
    CollectPendingChecks(info, pending);
    if (changes) changes->push_back(info);
    views.push_back(std::make_shared<CView>(std::move(info)));
  }
  if (!pending.empty()) SetPendingChecks(pending);
  return true;
}

CViewGroupManager::Joining CViewGroupManager::MembersOf(const std::vector<std::shared_ptr<CView>>& views) {
  Joining members;
  for (const auto& view : views) members[view->GetViewGroupID()].Append(view);
  return members;
}

void CViewGroupManager::JoinGroups(Joining members) {
  for (auto& [idViewGroup, joining] : members) {
    if (const auto group = GetViewGroupByID(idViewGroup)) group->AppendMemberViews(std::move(joining));
  }
}

void CViewGroupManager::CollectPendingChecks(const ViewInfo& view, PendingChecks& pending) const {
  if (view.nMethod != ChangeModified) return;
  const std::shared_ptr<CView> cached = GetViewByID(view.idView);
  if (!cached) return;
  for (const int type : {ResourceTypeCamera, ResourceTypeDoor, ResourceTypeRadar, ResourceTypeElevator}) {
    if (cached->CheckResourceExist(type) && ShowsUnknownElement(view, type)) pending[type].push_back(view.idView);
  }
}

void CViewGroupManager::AnalysisExtendInfo(const std::string& extendInfo, CameraGridStruct& window) {
  ReadExtendInfo(extendInfo, window);
}

void CViewGroupManager::LoadViewGroups(const std::string& data, std::string& cascadingErrorInfo) {
  ViewGroupTable groups;
  std::list<ViewGroupInfo> changes;
  AnalysisViewGroupInitData(data, cascadingErrorInfo, groups, changes);
  WriteLock lock(m_groupLock);
  mapViewGroups.merge(groups);
}

void CViewGroupManager::LoadViews(const std::string& data, std::string& cascadingErrorInfo) {
  std::vector<std::shared_ptr<CView>> views;
  ReadViews(data, cascadingErrorInfo, views, nullptr);
  Joining members = MembersOf(views);
  CachedViews table;
  table.reserve(views.size());
  for (const auto& view : views) table.emplace(view->GetID(), view);
  {
    WriteLock lock(m_viewLock);
    mapViews.reserve(mapViews.size() + table.size());
    // From here on nothing can fail, so that no member joins its group twice when memory ran out and the load is made
    // again.
    mapViews.merge(table);
  }
  JoinGroups(std::move(members));
}

}  // namespace QorviViewPlugin
