// SPDX-License-Identifier: Apache-2.0
// How the manager reads lists and change documents, loads lists into the cache, and finds changes that were missed.
#include <set>
#include <unordered_set>

#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewList.h"
#include "QorviViewPlugin/base/LogLine.h"

namespace QorviViewPlugin {

bool CViewGroupManager::AnalysisViewGroupInitData(const std::string& data, std::string& cascadingErrorInfo,
                                                  ViewGroupTable& groups, std::list<ViewGroupInfo>& changes) {
  const auto list = ReadGroupList(data, cascadingErrorInfo);
  if (!list) return false;
  for (const ViewGroupInfo& group : list->groups)
    groups.emplace(group.idViewGroup, std::make_shared<CViewGroup>(group));
  changes.insert(changes.end(), list->groups.begin(), list->groups.end());
  return true;
}

std::optional<CViewGroupManager::GroupList> CViewGroupManager::ReadGroupList(const std::string& data,
                                                                             std::string& cascadingErrorInfo) {
  GroupList list;
  if (data.empty()) return list;
  NetLink::CRapidJsonProto document;
  document.set_str(data);
  ErrorCode error;
  const bool isUsable = ReadResponseStatus(document, CascadingText::Kept, error);
  cascadingErrorInfo = error.GetCasadingErrorInfo();
  if (!isUsable) {
    QORVI_LOG_ERROR("QorviViewPlugin::CViewGroupManager::AnalysisViewGroupInitData",
                    "AnalysisViewGroupInitData_Error:%d", error.GetSubError());
    return std::nullopt;
  }
  list.completeUpTo = ReadDataNumber(document);
  ReadViewGroups(document, DocumentOrigin::Download, list.groups);
  return list;
}

bool CViewGroupManager::AnalysisViewInitData(const std::string& data, std::string& cascadingErrorInfo, ViewTable& views,
                                             std::list<ViewInfo>& changes) {
  const auto list = ReadViews(data, cascadingErrorInfo);
  if (!list) return false;
  MembersByGroup members;
  for (const auto& view : list->views) {
    const auto info = view->Info();
    changes.push_back(*info);
    if (info->nChangeNumber == 0) members[info->idViewGroup].Append(view);
    views.emplace(info->idView, view);
  }
  JoinGroups(std::move(members));
  return true;
}

std::optional<CViewGroupManager::ViewsOfList> CViewGroupManager::ReadViews(const std::string& data,
                                                                           std::string& cascadingErrorInfo) {
  ErrorCode error;
  ViewList read;
  const bool isUsable = ReadViewList(data, error, read);
  cascadingErrorInfo = error.GetCasadingErrorInfo();
  if (!isUsable) {
    QORVI_LOG_ERROR("QorviViewPlugin::CViewGroupManager::AnalysisViewInitData", "AnalysisViewInitData_Error:%d",
                    error.GetSubError());
    return std::nullopt;
  }
  ViewsOfList list;
  list.completeUpTo = read.completeUpTo;
  PendingChecks pending = PendingChecksOf(read.views);
  list.views.reserve(read.views.size());
  for (ViewInfo& info : read.views) list.views.push_back(std::make_shared<CView>(std::move(info)));
  if (!pending.empty()) SetPendingChecks(pending);
  return list;
}

void CViewGroupManager::JoinGroups(MembersByGroup members) {
  for (auto& [idViewGroup, joining] : members) {
    if (const auto group = GetViewGroupByID(idViewGroup)) group->AppendMemberViews(std::move(joining));
  }
}

PendingChecks CViewGroupManager::PendingChecksOf(std::span<const ViewInfo> views) const {
  PendingChecks pending;
  for (const ViewInfo& view : views) {
    const std::shared_ptr<CView> cached = view.nMethod == ChangeModified ? GetViewByID(view.idView) : nullptr;
    if (!cached) continue;
    for (const int type : {ResourceTypeCamera, ResourceTypeDoor, ResourceTypeRadar, ResourceTypeElevator}) {
      if (cached->CheckResourceExist(type) && ShowsUnknownElement(view, type)) pending[type].push_back(view.idView);
    }
  }
  return pending;
}

void CViewGroupManager::NotePendingChecks(std::span<const ViewInfo> views) {
  PendingChecks pending = PendingChecksOf(views);
  if (!pending.empty()) SetPendingChecks(pending);
}

void CViewGroupManager::AnalysisExtendInfo(const std::string& extendInfo, CameraGridStruct& window) {
  ReadExtendInfo(extendInfo, window);
}

void CViewGroupManager::LoadViewGroups(const std::string& data, std::string& cascadingErrorInfo) {
  const auto list = ReadGroupList(data, cascadingErrorInfo);
  if (!list) return;
  ViewGroupTable groups;
  for (const ViewGroupInfo& group : list->groups)
    groups.emplace(group.idViewGroup, std::make_shared<CViewGroup>(group));
  WriteLock lock(m_groupLock);
  if (list->completeUpTo == 0 || (mapViewGroups.empty() && m_groupOrder.IsBlank())) {
    mapViewGroups.merge(groups);
  } else {
    TakeLoadedViewGroups(*list);
  }
  m_groupOrder.StartFrom(list->completeUpTo);
}

void CViewGroupManager::TakeLoadedViewGroups(const GroupList& list) {
  std::set<unsigned int> listed;
  for (const ViewGroupInfo& group : list.groups) listed.insert(group.idViewGroup);
  std::erase_if(mapViewGroups, [&](const auto& entry) REQUIRES(m_groupLock) {
    return !listed.contains(entry.first) && m_groupOrder.NumberOf(entry.first) <= list.completeUpTo;
  });
  for (const ViewGroupInfo& group : list.groups) {
    if (group.nChangeNumber == 0) {
      mapViewGroups.emplace(group.idViewGroup, std::make_shared<CViewGroup>(group));
    } else if (m_groupOrder.IsNews(group.idViewGroup, group.nChangeNumber)) {
      PutViewGroup(group);
    }
  }
}

void CViewGroupManager::MergeViews(CachedViews& views) {
  if (mapViews.empty()) {
    // Others wait for the lock: as long as it takes to exchange two tables, and not to fill one of 100,000 views.
    mapViews.swap(views);
    return;
  }
  mapViews.reserve(mapViews.size() + views.size());
  mapViews.merge(views);
}

void CViewGroupManager::LoadViews(const std::string& data, std::string& cascadingErrorInfo) {
  const auto list = ReadViews(data, cascadingErrorInfo);
  if (!list) return;
  MembersByGroup members;
  CachedViews table;
  table.reserve(list->views.size());
  for (const auto& view : list->views) {
    members[view->GetViewGroupID()].Append(view);
    table.emplace(view->GetID(), view);
  }
  MutexLock order(m_viewOrderLock);
  bool mergesFreely = list->completeUpTo == 0;
  {
    WriteLock lock(m_viewLock);
    mergesFreely = mergesFreely || (mapViews.empty() && m_viewOrder.IsBlank());
    // After this nothing can fail. Otherwise a repeated load would add members twice.
    if (mergesFreely) MergeViews(table);
  }
  if (mergesFreely) {
    JoinGroups(std::move(members));
  } else {
    TakeLoadedViews(*list);
  }
  m_viewOrder.StartFrom(list->completeUpTo);
}

std::list<ViewInfo> CViewGroupManager::MissedViewChanges(const std::string& data) {
  std::list<ViewInfo> changes;
  std::string ignoredError;
  const auto list = ReadViews(data, ignoredError);
  if (!list || list->completeUpTo == 0) return changes;
  std::unordered_set<unsigned int> listed;
  for (const auto& view : list->views) listed.insert(view->GetID());
  MutexLock order(m_viewOrderLock);
  {
    ReadLock lock(m_viewLock);
    for (const auto& [id, view] : mapViews) {
      if (listed.contains(id) || !m_viewOrder.IsNews(id, list->completeUpTo)) continue;
      changes.push_back({.idView = id, .nMethod = ChangeDeleted, .nChangeNumber = list->completeUpTo});
    }
  }
  for (const auto& view : list->views) {
    const auto info = view->Info();
    if (!m_viewOrder.IsNews(info->idView, info->nChangeNumber)) continue;
    changes.push_back(*info);
    changes.back().nMethod = GetViewByID(info->idView) ? ChangeModified : ChangeAdded;
  }
  return changes;
}

std::list<ViewGroupInfo> CViewGroupManager::MissedViewGroupChanges(const std::string& data) {
  std::list<ViewGroupInfo> changes;
  std::string ignoredError;
  const auto list = ReadGroupList(data, ignoredError);
  if (!list || list->completeUpTo == 0) return changes;
  std::set<unsigned int> listed;
  for (const ViewGroupInfo& group : list->groups) listed.insert(group.idViewGroup);
  ReadLock lock(m_groupLock);
  for (const ViewGroupInfo& group : list->groups) {
    if (!m_groupOrder.IsNews(group.idViewGroup, group.nChangeNumber)) continue;
    changes.push_back(group);
    changes.back().nMethod = FindViewGroup(group.idViewGroup) ? ChangeModified : ChangeAdded;
  }
  for (const auto& [id, group] : mapViewGroups) {
    if (listed.contains(id) || !m_groupOrder.IsNews(id, list->completeUpTo)) continue;
    changes.push_back({.idViewGroup = id, .nMethod = ChangeDeleted, .nChangeNumber = list->completeUpTo});
  }
  return changes;
}

void CViewGroupManager::TakeLoadedViews(const ViewsOfList& list) {
  std::unordered_set<unsigned int> listed;
  for (const auto& view : list.views) listed.insert(view->GetID());
  std::vector<std::shared_ptr<CView>> stay;
  std::vector<unsigned int> go;
  {
    ReadLock lock(m_viewLock);
    for (const auto& [id, view] : mapViews) {
      if (listed.contains(id)) continue;
      if (m_viewOrder.NumberOf(id) <= list.completeUpTo) {
        go.push_back(id);
      } else {
        stay.push_back(view);
      }
    }
  }
  unsigned int groupId = kNoId;
  for (const unsigned int id : go) EraseView(id, groupId);
  // What was cached before its group was joins it now.
  for (const auto& view : stay) EnsureMember(view);
  for (const auto& view : list.views) {
    const auto info = view->Info();
    if (info->nChangeNumber != 0 && m_viewOrder.IsNews(info->idView, info->nChangeNumber)) {
      PutView(view);
    } else if (const auto cached = GetViewByID(info->idView)) {
      EnsureMember(cached);
    } else if (info->nChangeNumber == 0) {
      InsertView(view);
    }
  }
}

}  // namespace QorviViewPlugin
