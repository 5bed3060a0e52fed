// SPDX-License-Identifier: Apache-2.0
// How a change, or an own edit that the server has accepted, is applied to the cached views.
#include <utility>

#include "QorviViewPlugin/ViewDataManager/ChangeNotice.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {

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
    if (m_viewOrder.HasNewerWaiting(id, info->nChangeNumber)) {
      view = std::make_shared<CView>(m_viewOrder.Newest(*info, id));
    }
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
    // A view without a number joined its group when it was read. An added view with a number joins in PutView. A
    // changed or deleted one joins here, unless a record that is as new or newer waits for it.
    MembersByGroup joining;
    if (change.nChangeNumber != 0 && change.nMethod != ChangeAdded &&
        !m_viewOrder.HasNewerWaiting(id, change.nChangeNumber)) {
      joining[change.idViewGroup].Append(std::make_shared<CView>(change));
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
    JoinGroups(std::move(joining));
  }
  if (!isTold) return;
  if (change.nMethod == ChangeModified) {
    Notify(Notice(UIntToString(id), NoticeChanged), ResourceData::ResourceTypeView);
  } else {
    NotifyOfMember(groupId, change.nMethod == ChangeAdded ? NoticeChildAdded : NoticeChildRemoved, id);
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
  if (!bSilent) NotifyOfMember(info.idViewGroup, NoticeChildAdded, info.idView);
  return true;
}

bool CViewGroupManager::AttachViewToGroup(std::shared_ptr<CView> view, unsigned int groupId) {
  WriteLock lock(m_groupLock);
  const auto group = FindViewGroup(groupId);
  return group && group->AddMemberView(std::move(view));
}

bool CViewGroupManager::RemoveViewFromCache(unsigned int id, bool bSilent, ChangeNumber number) {
  unsigned int groupId = kNoId;
  {
    MutexLock order(m_viewOrderLock);
    if (!IsViewNews(id, number) || !RemoveView(id, number, groupId)) return true;
  }
  if (!bSilent) NotifyOfMember(groupId, NoticeChildRemoved, id);
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

}  // namespace QorviViewPlugin
