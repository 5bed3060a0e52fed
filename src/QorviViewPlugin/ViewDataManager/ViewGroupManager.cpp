// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"

#include <algorithm>
#include <utility>

#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewSession.h"
#include "QorviViewPlugin/ViewObserverManager/OrlUserObserver.h"
#include "VantBase/SingletonImpl.h"

template class Vant::Base::CSingleton<QorviViewPlugin::CViewGroupManager>;

namespace QorviViewPlugin {

CViewGroupManager::CViewGroupManager() {
  SetListedViewsCheck([](std::span<const ViewInfo> listed) { Manager().NotePendingChecks(listed); });
}

CViewGroupManager::~CViewGroupManager() {
  std::unique_ptr<COrlUserObserver> observer;
  {
    MutexLock lock(m_userLock);
    observer.swap(m_pUserObserver);
  }
  if (!observer) return;
  Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance().SyncUnregisterObserver(observer.get());
}

// --- Clearing

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
    MutexLock order(m_viewOrderLock);
    m_viewOrder.Forget();
    WriteLock lock(m_viewLock);
    views.swap(mapViews);
  }
  WriteLock lock(m_groupLock);
  m_groupOrder.Forget();
  groups.swap(mapViewGroups);
}

// --- Look-ups

std::shared_ptr<CView> CViewGroupManager::GetViewByID(unsigned int id) const {
  ReadLock lock(m_viewLock);
  const auto entry = mapViews.find(id);
  return entry == mapViews.end() ? nullptr : entry->second;
}

std::shared_ptr<CViewGroup> CViewGroupManager::GetViewGroupByID(unsigned int id) const {
  ReadLock lock(m_groupLock);
  return FindViewGroup(id);
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
  mapPendingChecks = std::exchange(checks, {});
}

void CViewGroupManager::TakePendingChecks(PendingChecks& out) {
  MutexLock lock(m_checkLock);
  out = std::exchange(mapPendingChecks, {});
}

}  // namespace QorviViewPlugin
