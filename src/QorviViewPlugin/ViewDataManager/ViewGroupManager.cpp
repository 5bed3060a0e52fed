// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewSession.h"
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

// --- Views

void CViewGroupManager::InsertView(const std::shared_ptr<CView>& view) {
  const auto info = view->Info();
  bool isNew = false;
  {
    WriteLock lock(m_viewLock);
    isNew = mapViews.emplace(info->idView, view).second;
  }
  try {
    AttachViewToGroup(view, info->idViewGroup);
  } catch (...) {
    WriteLock lock(m_viewLock);
    if (isNew) mapViews.erase(info->idView);
    throw;
  }
}

bool CViewGroupManager::EraseView(unsigned int id, unsigned int& idViewGroup) {
  const std::shared_ptr<CView> view = GetViewByID(id);
  if (!view) return false;
  idViewGroup = view->GetViewGroupID();
  {
    WriteLock lock(m_viewLock);
    mapViews.erase(id);
  }
  if (const auto group = GetViewGroupByID(idViewGroup)) group->RemoveMemberView(id);
  return true;
}

std::shared_ptr<CView> CViewGroupManager::PutView(std::shared_ptr<CView> view) {
  const auto info = view->Info();
  const unsigned int id = info->idView;
  const bool isNumbered = info->nChangeNumber != 0;
  if (isNumbered) {
    m_viewOrder.Reserve(id);
    if (m_viewOrder.IsOvertaken(id, info->nChangeNumber)) view = std::make_shared<CView>(m_viewOrder.Newest(*info, id));
  }
  unsigned int oldGroupId = kNoId;
  EraseView(id, oldGroupId);
  InsertView(view);
  if (isNumbered) m_viewOrder.NoteCached(id, view->Info()->nChangeNumber);
  return view;
}

void CViewGroupManager::EnsureMember(const std::shared_ptr<CView>& view) {
  const auto group = GetViewGroupByID(view->GetViewGroupID());
  if (group && group->FindMemberView(view->GetID()) != view) group->AddMemberView(view);
}

bool CViewGroupManager::ChangeView(const ViewInfo& info) {
  const unsigned int id = info.idView;
  const std::shared_ptr<CView> view = GetViewByID(id);
  const bool isNumbered = info.nChangeNumber != 0;
  if (!view) {
    if (isNumbered) m_viewOrder.Keep(id, info);
    return false;
  }
  if (isNumbered) m_viewOrder.Reserve(id);
  view->SetInfo(info);
  if (isNumbered) m_viewOrder.NoteCached(id, info.nChangeNumber);
  return true;
}

bool CViewGroupManager::RemoveView(unsigned int id, ChangeNumber number, unsigned int& idViewGroup) {
  if (number != 0) m_viewOrder.Reserve(id);
  const bool wasCached = EraseView(id, idViewGroup);
  if (number != 0) m_viewOrder.NoteRemoved(id, number);
  return wasCached;
}

bool CViewGroupManager::IsViewNews(unsigned int id, ChangeNumber number) const {
  return number == 0 || m_viewOrder.IsNews(id, number);
}

void CViewGroupManager::ApplyViewChange(const ViewInfo& change) {
  const unsigned int id = change.idView;
  unsigned int groupId = kNoId;
  bool isTold = false;
  {
    MutexLock order(m_viewOrderLock);
    if (!IsViewNews(id, change.nChangeNumber)) return;
    // A view without a number has joined its group when it was read. Of those with a number an added view joins with
    // its entry, and one that comes after a newer record was kept for its view does not join.
    Joining beside;
    if (change.nChangeNumber != 0 && change.nMethod != ChangeAdded &&
        !m_viewOrder.IsOvertaken(id, change.nChangeNumber)) {
      beside[change.idViewGroup].Append(std::make_shared<CView>(change));
    }
    switch (change.nMethod) {
      case ChangeAdded:
        groupId = PutView(std::make_shared<CView>(change))->GetViewGroupID();
        isTold = true;
        break;
      case ChangeModified:
        isTold = ChangeView(change);
        break;
      case ChangeDeleted:
        isTold = RemoveView(id, change.nChangeNumber, groupId);
        break;
      default:
        break;
    }
    JoinGroups(std::move(beside));
  }
  if (!isTold) return;
  if (change.nMethod == ChangeModified) {
    Notify(Notice(UIntToString(id), NoticeChanged), ResourceData::ResourceTypeView);
  } else {
    const NoticeState state = change.nMethod == ChangeAdded ? NoticeChildAdded : NoticeChildRemoved;
    Notify(ChildNotice(groupId, state, ResourceData::ResourceTypeView, id), ResourceData::ResourceTypeViewGroup);
  }
}

void CViewGroupManager::ForgetViewNumbers() {
  MutexLock order(m_viewOrderLock);
  m_viewOrder.Forget();
}

bool CViewGroupManager::InsertViewToCache(const ViewInfo& info, bool bSilent) {
  {
    MutexLock order(m_viewOrderLock);
    if (!IsViewNews(info.idView, info.nChangeNumber)) return true;
    const auto view = std::make_shared<CView>(info);
    if (info.nChangeNumber != 0) {
      PutView(view);
    } else {
      InsertView(view);
    }
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

bool CViewGroupManager::RemoveViewFromCache(unsigned int id, bool bSilent, ChangeNumber number) {
  unsigned int groupId = kNoId;
  {
    MutexLock order(m_viewOrderLock);
    if (!IsViewNews(id, number) || !RemoveView(id, number, groupId)) return true;
  }
  if (!bSilent) {
    Notify(ChildNotice(groupId, NoticeChildRemoved, ResourceData::ResourceTypeView, id),
           ResourceData::ResourceTypeViewGroup);
  }
  return true;
}

bool CViewGroupManager::UpdateViewInCache(const ViewInfo& info) {
  {
    MutexLock order(m_viewOrderLock);
    if (!IsViewNews(info.idView, info.nChangeNumber) || !ChangeView(info)) return false;
  }
  Notify(Notice(UIntToString(info.idView), NoticeChanged), ResourceData::ResourceTypeView);
  return true;
}

// --- Groups

std::shared_ptr<CViewGroup> CViewGroupManager::FindViewGroup(unsigned int id) const {
  const auto entry = mapViewGroups.find(id);
  return entry == mapViewGroups.end() ? nullptr : entry->second;
}

bool CViewGroupManager::IsViewGroupNews(unsigned int id, ChangeNumber number) const {
  return number == 0 || m_groupOrder.IsNews(id, number);
}

ViewGroupInfo CViewGroupManager::PutViewGroup(const ViewGroupInfo& info) {
  const unsigned int id = info.idViewGroup;
  m_groupOrder.Reserve(id);
  ViewGroupInfo newest = m_groupOrder.Newest(info, id);
  if (const auto group = FindViewGroup(id)) {
    group->SetInfo(newest);
  } else {
    mapViewGroups.emplace(id, std::make_shared<CViewGroup>(newest));
  }
  m_groupOrder.NoteCached(id, newest.nChangeNumber);
  return newest;
}

std::optional<ViewGroupInfo> CViewGroupManager::AddNumberedViewGroup(const ViewGroupInfo& info) {
  const unsigned int id = info.idViewGroup;
  MutexLock order(m_viewOrderLock);
  bool isCached = false;
  {
    ReadLock lock(m_groupLock);
    if (!m_groupOrder.IsNews(id, info.nChangeNumber)) return std::nullopt;
    isCached = FindViewGroup(id) != nullptr;
  }
  MemberViews members;
  if (!isCached) {
    ReadLock lock(m_viewLock);
    for (const auto& entry : mapViews) {
      if (entry.second->GetViewGroupID() == id) members.Append(entry.second);
    }
  }
  WriteLock lock(m_groupLock);
  if (!m_groupOrder.IsNews(id, info.nChangeNumber)) return std::nullopt;
  const bool isNew = !FindViewGroup(id);
  ViewGroupInfo put = PutViewGroup(info);
  if (isNew) FindViewGroup(id)->AppendMemberViews(std::move(members));
  return put;
}

void CViewGroupManager::ApplyViewGroupChange(const ViewGroupInfo& change) {
  switch (change.nMethod) {
    case ChangeAdded:
      // Announced anew, a group without a number loses its members.
      if (change.nChangeNumber == 0) RemoveViewGroupFromCache(change.idViewGroup, true);
      InsertViewGroupToCache(change);
      break;
    case ChangeModified:
      UpdateViewGroupInCache(change);
      break;
    case ChangeDeleted:
      RemoveViewGroupFromCache(change.idViewGroup, false, change.nChangeNumber);
      break;
    default:
      break;
  }
}

void CViewGroupManager::ForgetViewGroupNumbers() {
  WriteLock lock(m_groupLock);
  m_groupOrder.Forget();
}

bool CViewGroupManager::InsertViewGroupToCache(const ViewGroupInfo& info) {
  std::optional<ViewGroupInfo> inserted = info;
  if (info.nChangeNumber != 0) {
    inserted = AddNumberedViewGroup(info);
    if (!inserted) return true;
  } else {
    WriteLock lock(m_groupLock);
    mapViewGroups.emplace(info.idViewGroup, std::make_shared<CViewGroup>(info));
  }
  Notice notice =
      ChildNotice(inserted->idParent, NoticeChildAdded, ResourceData::ResourceTypeViewGroup, inserted->idViewGroup);
  notice.other_change_info = IntToString(inserted->enumViewType);
  Notify(notice, ResourceData::ResourceTypeViewGroup);
  return true;
}

bool CViewGroupManager::RemoveViewGroupFromCache(unsigned int id, bool bSilent, ChangeNumber number) {
  WriteLock lock(m_groupLock);
  if (!IsViewGroupNews(id, number)) return true;
  if (number != 0) m_groupOrder.Reserve(id);
  const std::shared_ptr<CViewGroup> group = FindViewGroup(id);
  mapViewGroups.erase(id);
  if (number != 0) m_groupOrder.NoteRemoved(id, number);
  if (group && !bSilent) {
    Notify(ChildNotice(group->GetParentID(), NoticeChildRemoved, ResourceData::ResourceTypeViewGroup, id),
           ResourceData::ResourceTypeViewGroup);
  }
  return true;
}

bool CViewGroupManager::UpdateViewGroupInCache(const ViewGroupInfo& info) {
  const unsigned int id = info.idViewGroup;
  Notice notice(UIntToString(id), NoticeRenamed);
  {
    WriteLock lock(m_groupLock);
    if (!IsViewGroupNews(id, info.nChangeNumber)) return false;
    const std::shared_ptr<CViewGroup> group = FindViewGroup(id);
    if (!group) {
      if (info.nChangeNumber != 0) m_groupOrder.Keep(id, info);
      return false;
    }
    if (info.nChangeNumber != 0) {
      notice.name = PutViewGroup(info).strName;
    } else {
      group->SetInfo(info);
      notice.name = info.strName;
    }
  }
  Notify(notice, ResourceData::ResourceTypeViewGroup);
  return false;
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
