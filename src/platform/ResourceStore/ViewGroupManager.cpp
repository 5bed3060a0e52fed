// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/ViewGroupManager.h"

#include <utility>

#include "BizShared/NetCommManager.h"
#include "BizShared/details/Process.h"
#include "ResourceStore/ElementStore.h"
#include "ResourceStore/ViewSync.h"
#include "ResourceStore/details/ChangeRelay.h"
#include "ResourceStore/details/StatusBoard.h"
#include "VantBase/Log.h"
#include "VantBase/SingletonImpl.h"
#include "base/Mutex.h"

template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<ResourceStore::CViewGroupManager>;

namespace ResourceStore {

namespace {

using details::ListKind;

details::DownloadedList AsDownloaded(const std::string& text, const details::ListNames& names) {
  details::ListDocument document;
  if (!details::ReadListDocument(text, names, false, document)) document = {};
  return {text, document.number, document.saysNumber};
}

}  // namespace

// The lock is not held while the thread is waited for.
class CViewGroupManager::Impl {
 public:
  Impl() { BizShared::CNetCommManager::Instance().SetEditWatch(m_relay); }
  ~Impl() {
    Stop();
    BizShared::CNetCommManager::Instance().SetEditWatch({});
  }

  void Start() {
    base::MutexLock lock(m_mutex);
    if (m_sync && m_sync->IsThisThread()) return;
    m_stopped.Wait(lock, [this]() REQUIRES(m_mutex) { return !m_stopping; });
    if (m_sync) return;
    m_relay->Clear();
    m_status.Begin(DownloadState::Connecting);
    m_sync = std::make_unique<ViewSync>(*m_relay, m_status);
  }

  void Stop() {
    if (End()) m_status.Tell();
  }

  const std::shared_ptr<details::ChangeRelay> m_relay = std::make_shared<details::ChangeRelay>();
  details::StatusBoard m_status;

 private:
  // Whether there was something to end.
  bool End() {
    base::MutexLock lock(m_mutex);
    if (m_sync && m_sync->IsThisThread()) {
      Vant::Base::details::IOrlFormatLog(5, "Platform", "The view download cannot be stopped from its own callback");
      return false;
    }
    m_stopped.Wait(lock, [this]() REQUIRES(m_mutex) { return !m_stopping; });
    const bool isRunning = m_sync != nullptr;
    if (isRunning) {
      m_stopping = true;
      ViewSync& sync = *m_sync;
      lock.Unlock();
      sync.End();
      lock.Lock();
      m_sync.reset();
      m_elements->Clear();  // the next user may not see the same
      m_status.Begin(DownloadState::NotStarted);
      m_stopping = false;
      m_stopped.NotifyAll();
    }
    m_relay->Clear();
    return isRunning;
  }

  const std::shared_ptr<ElementStore> m_elements = ElementStore::Shared();
  base::Mutex m_mutex;
  base::Condition m_stopped;
  bool m_stopping GUARDED_BY(m_mutex) = false;
  std::unique_ptr<ViewSync> m_sync GUARDED_BY(m_mutex);
};

CViewGroupManager::CViewGroupManager() : m_impl(std::make_unique<Impl>()) {}
CViewGroupManager::~CViewGroupManager() {
  if (BizShared::details::IsForkedChild()) BizShared::details::LeaveToParent(m_impl);
}

bool CViewGroupManager::IsViewDownloadSuccess() const {
  return m_impl->m_relay->IsFinished();
}

void CViewGroupManager::GetViewsData(std::string& data) const {
  data = m_impl->m_relay->Text(ListKind::Views);
}

void CViewGroupManager::GetViewGroupsData(std::string& data) const {
  data = m_impl->m_relay->Text(ListKind::Groups);
}

void CViewGroupManager::SetViewsUpdateCallback(UpdateCallback callback) {
  if (BizShared::details::IsForkedChild()) return;  // no thread will ever call
  m_impl->m_relay->Slot(ListKind::Views).Set(std::move(callback));
}

void CViewGroupManager::SetViewGroupsUpdateCallback(UpdateCallback callback) {
  if (BizShared::details::IsForkedChild()) return;
  m_impl->m_relay->Slot(ListKind::Groups).Set(std::move(callback));
}

void CViewGroupManager::Start() {
  if (!BizShared::details::ClaimProcess()) return;
  // Made after the transport, so that the thread has ended when the transport's library cleans up, also when the host
  // never stops.
  BizShared::CNetCommManager::Instance();
  struct StopAtExit {
    ~StopAtExit() { manager->Stop(); }
    CViewGroupManager* manager;
  };
  static StopAtExit stopAtExit{this};
  m_impl->Start();
}

void CViewGroupManager::Stop() {
  if (BizShared::details::IsForkedChild()) return;
  m_impl->Stop();
}

DownloadStatus CViewGroupManager::GetDownloadStatus() const {
  return BizShared::details::IsForkedChild() ? DownloadStatus{} : m_impl->m_status.Get();
}

void CViewGroupManager::SetDownloadStatusCallback(StatusCallback callback) {
  if (BizShared::details::IsForkedChild()) return;
  m_impl->m_status.SetCallback(std::move(callback));
}

void CViewGroupManager::SetDownloadedData(const std::string& groups, const std::string& views, bool finished) {
  m_impl->m_relay->Set(AsDownloaded(groups, details::kViewGroupNames), AsDownloaded(views, details::kViewNames),
                       finished);
}

void CViewGroupManager::SetDownloadedAgain(const std::string& groups, const std::string& views) {
  m_impl->m_relay->DownloadedAgain(AsDownloaded(groups, details::kViewGroupNames),
                                   AsDownloaded(views, details::kViewNames));
}

void CViewGroupManager::TakeChange(unsigned long long number, const std::string& event, const std::string& data) {
  m_impl->m_relay->TakeEvent(number, event, data);
}

void CViewGroupManager::TellDueChanges() {
  m_impl->m_relay->TellDue();
}

void CViewGroupManager::NotifyViewsUpdate(const std::string& data) {
  m_impl->m_relay->Slot(ListKind::Views).Call(data);
}

void CViewGroupManager::NotifyViewGroupsUpdate(const std::string& data) {
  m_impl->m_relay->Slot(ListKind::Groups).Call(data);
}

}  // namespace ResourceStore
