// SPDX-License-Identifier: Apache-2.0
// The manager's requests to the server. An edit asks the server first, and changes the cache, silently, only after the
// server has agreed.
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewGroupSession.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsViewSession.h"
#include "QorviViewPlugin/ViewObserverManager/OrlUserObserver.h"
#include "QorviViewPlugin/base/TextConversion.h"
#include "VeltControl/VeltControl.h"

namespace QorviViewPlugin {
namespace {

// Hands the reason out; always false.
bool Fail(const ErrorCode& reason, ErrorCode& err) {
  err = reason;
  return false;
}

}  // namespace

bool CViewGroupManager::AddView(const ViewInfo& info, unsigned int& newId, ErrorCode& err) {
  CmsAddView session;
  if (!session.AddCmsView(info)) return Fail(session.m_error, err);
  newId = session.m_idNew;
  ViewInfo added = info;
  added.idView = newId;
  added.nChangeNumber = session.m_changeNumber;
  InsertViewToCache(added, true);
  return true;
}

bool CViewGroupManager::AddViewGroup(const ViewGroupInfo& info, unsigned int& newId, ErrorCode& err) {
  CmsAddViewGroup session;
  if (!session.AddCmsViewGroup(info)) return Fail(session.m_error, err);
  newId = session.m_idNew;
  ViewGroupInfo added = info;
  added.idViewGroup = newId;
  added.nChangeNumber = session.m_changeNumber;
  CacheViewGroup(added);
  return true;
}

bool CViewGroupManager::ModifyView(const ViewInfo& info, ErrorCode& err) {
  CmsModifyView session;
  if (!session.ModifyCmsView(info)) return Fail(session.m_error, err);
  ViewInfo changed = info;
  changed.nChangeNumber = session.m_changeNumber;
  MutexLock order(m_viewOrderLock);
  if (!IsViewNews(changed.idView, changed.nChangeNumber)) return true;
  const std::shared_ptr<CView> view = GetViewByID(changed.idView);
  const bool isNumbered = changed.nChangeNumber != 0;
  if (!view) {
    if (isNumbered) m_viewOrder.Keep(info.idView, std::move(changed));
    return true;
  }
  // What may want memory comes first: nothing after the new group's entry can fail.
  if (isNumbered) m_viewOrder.Reserve(info.idView);
  auto record = std::make_shared<const ViewInfo>(std::move(changed));
  const unsigned int oldGroupId = view->GetViewGroupID();
  if (oldGroupId != info.idViewGroup) {
    AttachViewToGroup(view, info.idViewGroup);
    if (const auto oldGroup = GetViewGroupByID(oldGroupId)) oldGroup->RemoveMemberView(info.idView);
  }
  view->SetInfo(std::move(record));
  if (isNumbered) m_viewOrder.NoteCached(info.idView, session.m_changeNumber);
  return true;
}

bool CViewGroupManager::ModifyViewGroup(const ViewGroupInfo& info, ErrorCode& err) {
  CmsModifyViewGroup session;
  if (!session.ModifyCmsViewGroup(info)) return Fail(session.m_error, err);
  const unsigned int id = info.idViewGroup;
  WriteLock lock(m_groupLock);
  if (session.m_changeNumber != 0 && !m_groupOrder.IsRenameNews(id, session.m_changeNumber)) return true;
  const std::shared_ptr<CViewGroup> group = FindViewGroup(id);
  std::shared_ptr<ViewGroupInfo> renamed;
  if (group) {
    renamed = std::make_shared<ViewGroupInfo>(*group->Info());
    renamed->strName = info.strName;
  }
  if (session.m_changeNumber != 0) m_groupOrder.NoteRename(id, session.m_changeNumber, info.strName);
  if (group) group->SetInfo(std::move(renamed));
  return true;
}

bool CViewGroupManager::DeleteView(unsigned int id, ErrorCode& err) {
  CmsDeleteView session;
  if (!session.DeleteCmsView(id)) return Fail(session.m_error, err);
  return RemoveViewFromCache(id, true, session.m_changeNumber);
}

bool CViewGroupManager::DeleteViewGroup(unsigned int id, ErrorCode& err) {
  if (!GetViewGroupByID(id)) return Fail(ErrorCode(2, 20, 3, ""), err);
  CmsDeleteViewGroup session;
  if (!session.DeleteCmsViewGroup(id)) return Fail(session.m_error, err);
  return RemoveViewGroupFromCache(id, true, session.m_changeNumber);
}

bool CViewGroupManager::GetDefaultViewConfig(int& viewId, int& viewType, ErrorCode& err) {
  uint32_t id = AsUnsigned(viewId);
  uint32_t type = AsUnsigned(viewType);
  const bool accepted = CmsViewConfig().GetDefualtViewConfig(id, type, err);
  viewId = AsSigned(id);
  viewType = AsSigned(type);
  return accepted;
}

bool CViewGroupManager::SetDefaultViewConfig(const int& viewId, int viewType, ErrorCode& err) {
  return CmsViewConfig().SetDefualtViewConfig(AsUnsigned(viewId), AsUnsigned(viewType), err);
}

COrlUserObserver& CViewGroupManager::UserObserver() {
  {
    MutexLock lock(m_userLock);
    if (m_pUserObserver) return *m_pUserObserver;
  }
  // The platform is asked without a lock, so that two threads may come here at once; the second one's goes again.
  auto& users = Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance();
  auto observer = std::make_unique<COrlUserObserver>();
  users.RegisterObserver(observer.get());
  {
    MutexLock lock(m_userLock);
    if (!m_pUserObserver) m_pUserObserver.swap(observer);
  }
  if (observer) users.SyncUnregisterObserver(observer.get());
  MutexLock lock(m_userLock);
  return *m_pUserObserver;
}

bool CViewGroupManager::GetAllUsers(ErrorCode& err, std::vector<std::shared_ptr<ResourceStore::CUserInfo>>& users) {
  constexpr int kPollMs = 20;
  COrlUserObserver& observer = UserObserver();
  auto& userManager = Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance();
  // Several callers may wait on the one observer: each sets the flag before it starts a download of its own, and every
  // download ends with a notification, so none waits for an end that has already come.
  observer.SetWaiting(true);
  userManager.StartDownLoadOrlUser();
  while (observer.IsWaiting()) VeltControl::qWait(kPollMs);
  // The outcome first: the users are then of that download or of a later one, never of one before it.
  const COrlUserObserver::Outcome outcome = observer.GetOutcome();
  userManager.GetOrlUsers(users);
  err = outcome.error;
  return outcome.succeeded;
}

}  // namespace QorviViewPlugin
