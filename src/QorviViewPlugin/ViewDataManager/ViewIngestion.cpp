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
  return ReadViews(data, cascadingErrorInfo, views, &changes);
}

bool CViewGroupManager::ReadViews(const std::string& data, std::string& cascadingErrorInfo, ViewTable& views,
                                  std::list<ViewInfo>* changes) {
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
  std::map<unsigned int, MemberViews> members;
  for (ViewInfo& info : read) {
    CollectPendingChecks(info, pending);
    if (changes) changes->push_back(info);
    const unsigned int idView = info.idView;
    const unsigned int idViewGroup = info.idViewGroup;
    const auto view = std::make_shared<CView>(std::move(info));
    views.emplace(idView, view);
    members[idViewGroup].Append(view);
  }
  // From here on nothing can fail, so that no member joins its group twice when memory ran out and the load is made
  // again.
  for (auto& [idViewGroup, joining] : members) {
    // Always the cached groups, also when `views` is not the cache. A view that a change document names thus becomes a
    // member beside the cached view of the same id.
    if (const auto group = GetViewGroupByID(idViewGroup)) group->AppendMemberViews(std::move(joining));
  }
  if (!pending.empty()) SetPendingChecks(pending);
  return true;
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
  ViewTable views;
  ReadViews(data, cascadingErrorInfo, views, nullptr);
  WriteLock lock(m_viewLock);
  mapViews.merge(views);
}

}  // namespace QorviViewPlugin
