// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"

#include <algorithm>
#include <utility>

#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewDataManager/ViewDocument.h"
#include "QorviViewPlugin/ViewObserverManager/OrlUserObserver.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "VantBase/SingletonImpl.h"

template class Vant::Base::CSingleton<QorviViewPlugin::CViewGroupManager>;

namespace QorviViewPlugin {
namespace {

using Notice = ResourceData::IResourceObserver::Param;

// What a notice says happened.
enum NoticeState : int { NoticeRenamed = 2, NoticeChildAdded = 3, NoticeChildRemoved = 4, NoticeChanged = 7 };

void Notify(const Notice& notice, ResourceData::ResourceType type) {
  Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().UpdateResourceInfo(notice, type);
}

Notice ChildNotice(unsigned int parentId, NoticeState state, ResourceData::ResourceType childType,
                   unsigned int childId) {
  Notice notice(UIntToString(parentId), state);
  notice.child_type = childType;
  notice.child_id = UIntToString(childId);
  return notice;
}

}  // namespace

CViewGroupManager::CViewGroupManager() = default;

CViewGroupManager::~CViewGroupManager() {
  MutexLock lock(m_userLock);
  if (!m_pUserObserver) return;
  Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance().SyncUnregisterObserver(m_pUserObserver.get());
  m_pUserObserver.reset();
}

bool CViewGroupManager::InsertViewToCache(const ViewInfo& info, bool bSilent) {
  const auto view = std::make_shared<CView>(info);
  bool isNew = false;
  {
    WriteLock lock(m_viewLock);
    isNew = mapViews.emplace(info.idView, view).second;
  }
  try {
    AttachViewToGroup(view, info.idViewGroup);
  } catch (...) {
    WriteLock lock(m_viewLock);
    if (isNew) mapViews.erase(info.idView);
    throw;
  }
  if (!bSilent) {
    Notify(ChildNotice(info.idViewGroup, NoticeChildAdded, ResourceData::ResourceTypeView, info.idView),
           ResourceData::ResourceTypeViewGroup);
  }
  return true;
}

bool CViewGroupManager::AttachViewToGroup(std::shared_ptr<CView> view, unsigned int groupId) {
  WriteLock lock(m_groupLock);
  const auto entry = mapViewGroups.find(groupId);
  return entry != mapViewGroups.end() && entry->second->AddMemberView(std::move(view));
}

bool CViewGroupManager::RemoveViewFromCache(unsigned int id, bool bSilent) {
  const std::shared_ptr<CView> view = GetViewByID(id);
  if (!view) return true;
  const unsigned int groupId = view->GetViewGroupID();
  {
    WriteLock lock(m_viewLock);
    mapViews.erase(id);
  }
  if (const auto group = GetViewGroupByID(groupId)) group->RemoveMemberView(id);
  if (!bSilent) {
    Notify(ChildNotice(groupId, NoticeChildRemoved, ResourceData::ResourceTypeView, id),
           ResourceData::ResourceTypeViewGroup);
  }
  return true;
}

bool CViewGroupManager::UpdateViewInCache(const ViewInfo& info) {
  const std::shared_ptr<CView> view = GetViewByID(info.idView);
  if (!view) return false;
  view->SetInfo(info);
  Notify(Notice(UIntToString(info.idView), NoticeChanged), ResourceData::ResourceTypeView);
  return true;
}

bool CViewGroupManager::InsertViewGroupToCache(const ViewGroupInfo& info) {
  {
    WriteLock lock(m_groupLock);
    mapViewGroups.emplace(info.idViewGroup, std::make_shared<CViewGroup>(info));
  }
  Notice notice = ChildNotice(info.idParent, NoticeChildAdded, ResourceData::ResourceTypeViewGroup, info.idViewGroup);
  notice.other_change_info = IntToString(info.enumViewType);
  Notify(notice, ResourceData::ResourceTypeViewGroup);
  return true;
}

bool CViewGroupManager::RemoveViewGroupFromCache(unsigned int id, bool bSilent) {
  WriteLock lock(m_groupLock);
  const auto entry = mapViewGroups.find(id);
  if (entry == mapViewGroups.end()) return true;
  const std::shared_ptr<CViewGroup> group = entry->second;
  mapViewGroups.erase(entry);
  if (!bSilent) {
    Notify(ChildNotice(group->GetParentID(), NoticeChildRemoved, ResourceData::ResourceTypeViewGroup, id),
           ResourceData::ResourceTypeViewGroup);
  }
  return true;
}

bool CViewGroupManager::UpdateViewGroupInCache(const ViewGroupInfo& info) {
  if (const auto group = GetViewGroupByID(info.idViewGroup)) {
    group->SetInfo(info);
    Notice notice(UIntToString(info.idViewGroup), NoticeRenamed);
    notice.name = info.strName;
    Notify(notice, ResourceData::ResourceTypeViewGroup);
  }
  return false;
}

void CViewGroupManager::ClearViewData() {
  m_bResourceReady = false;
  ClearCache();
  MutexLock lock(m_checkLock);
  mapPendingChecks.clear();
}

void CViewGroupManager::ClearCache() {
  // The tables are emptied under their locks and destroyed outside: a large site takes a while.
  CachedViews views;
  ViewGroupTable groups;
  {
    WriteLock lock(m_viewLock);
    views.swap(mapViews);
  }
  WriteLock lock(m_groupLock);
  groups.swap(mapViewGroups);
}

std::shared_ptr<CView> CViewGroupManager::GetViewByID(unsigned int id) const {
  ReadLock lock(m_viewLock);
  const auto entry = mapViews.find(id);
  return entry == mapViews.end() ? nullptr : entry->second;
}

std::shared_ptr<CViewGroup> CViewGroupManager::GetViewGroupByID(unsigned int id) const {
  ReadLock lock(m_groupLock);
  const auto entry = mapViewGroups.find(id);
  return entry == mapViewGroups.end() ? nullptr : entry->second;
}

bool CViewGroupManager::GetViewGroups(std::vector<std::shared_ptr<CViewGroup>>& out, unsigned int parentId) const {
  out.clear();
  ReadLock lock(m_groupLock);
  for (const auto& [id, group] : mapViewGroups) {
    if (group->GetParentID() == parentId) out.push_back(group);
  }
  return true;
}

void CViewGroupManager::GetViewsWithoutGroup(std::vector<std::shared_ptr<CView>>& out) const {
  std::vector<std::pair<unsigned int, std::shared_ptr<CView>>> found;
  {
    ReadLock lock(m_viewLock);
    for (const auto& entry : mapViews) {
      if (entry.second->GetViewGroupID() == kNoId) found.emplace_back(entry);
    }
  }
  std::sort(found.begin(), found.end());  // by id: no two have the same
  for (auto& [id, view] : found) out.push_back(std::move(view));
}

RelateResourceType CViewGroupManager::ServerToRelateType(const int& serverType) const {
  return RelateTypeFromServer(serverType);
}

int CViewGroupManager::RelateTypeToServer(const RelateResourceType& type) const {
  return RelateTypeToServerNumber(type);
}

void CViewGroupManager::SetPendingChecks(PendingChecks& checks) {
  MutexLock lock(m_checkLock);
  mapPendingChecks = std::move(checks);
  checks.clear();
}

void CViewGroupManager::TakePendingChecks(PendingChecks& out) {
  MutexLock lock(m_checkLock);
  out = std::move(mapPendingChecks);
  mapPendingChecks.clear();
}

}  // namespace QorviViewPlugin
