// SPDX-License-Identifier: Apache-2.0
// How a change, or an own edit that the server has accepted, is applied to the cached groups.
#include <optional>
#include <utility>

#include "QorviViewPlugin/ViewDataManager/ChangeNotice.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {

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

std::optional<ViewGroupInfo> CViewGroupManager::CacheViewGroup(const ViewGroupInfo& info) {
  const unsigned int id = info.idViewGroup;
  if (info.nChangeNumber == 0) {
    std::optional<ViewGroupInfo> cached = info;
    WriteLock lock(m_groupLock);
    mapViewGroups.emplace(id, std::make_shared<CViewGroup>(info));
    return cached;
  }
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
  const auto inserted = CacheViewGroup(info);
  if (!inserted) return true;
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

}  // namespace QorviViewPlugin
