// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/ViewGroupManager.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include "BizShared/NetCommManager.h"
#include "ResourceStore/ElementStore.h"
#include "ResourceStore/UpdateCallbackSlot.h"
#include "ResourceStore/ViewSync.h"
#include "ResourceStore/details/ResourceTexts.h"
#include "VantBase/Log.h"
#include "VantBase/SingletonImpl.h"

template class Vant::Base::CSingleton<ResourceStore::CViewGroupManager>;

namespace ResourceStore {

// m_mutex guards m_sync and m_stopping; it is not held while the thread is waited for. The rest guards itself.
class CViewGroupManager::Impl {
 public:
  ~Impl() { Stop(); }

  void Start() {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_sync && m_sync->IsThisThread()) return;
    m_stopped.wait(lock, [this] { return !m_stopping; });
    if (m_sync) return;
    m_texts.Clear();
    m_sync = std::make_unique<ViewSync>(ViewSync::Targets{m_texts, m_viewsCallback, m_groupsCallback});
  }

  void Stop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_sync && m_sync->IsThisThread()) {
      Vant::Base::details::IOrlFormatLog(5, "Platform", "The view download cannot be stopped from its own callback");
      return;
    }
    m_stopped.wait(lock, [this] { return !m_stopping; });
    if (m_sync) {
      m_stopping = true;
      lock.unlock();
      m_sync->End();
      lock.lock();
      m_sync.reset();
      m_elements->Clear();  // the next user may not see the same
      m_stopping = false;
      m_stopped.notify_all();
    }
    m_texts.Clear();
  }

  details::ResourceTexts m_texts;
  UpdateCallbackSlot m_viewsCallback;
  UpdateCallbackSlot m_groupsCallback;

 private:
  const std::shared_ptr<ElementStore> m_elements = ElementStore::Shared();
  std::mutex m_mutex;
  std::condition_variable m_stopped;
  bool m_stopping = false;
  std::unique_ptr<ViewSync> m_sync;
};

CViewGroupManager::CViewGroupManager() : m_impl(std::make_unique<Impl>()) {}
CViewGroupManager::~CViewGroupManager() = default;

bool CViewGroupManager::IsViewDownloadSuccess() const {
  return m_impl->m_texts.IsFinished();
}

void CViewGroupManager::GetViewsData(std::string& data) const {
  data = m_impl->m_texts.Views();
}

void CViewGroupManager::GetViewGroupsData(std::string& data) const {
  data = m_impl->m_texts.Groups();
}

void CViewGroupManager::SetViewsUpdateCallback(UpdateCallback callback) {
  m_impl->m_viewsCallback.Set(std::move(callback));
}

void CViewGroupManager::SetViewGroupsUpdateCallback(UpdateCallback callback) {
  m_impl->m_groupsCallback.Set(std::move(callback));
}

void CViewGroupManager::Start() {
  // Made after the transport, so that the thread has ended when the transport's library cleans up, also when the host
  // never stops.
  BizShared::CNetCommManager::Instance();
  struct StopAtExit {
    ~StopAtExit() { impl->Stop(); }
    Impl* impl;
  };
  static StopAtExit stopAtExit{m_impl.get()};
  m_impl->Start();
}

void CViewGroupManager::Stop() {
  m_impl->Stop();
}

void CViewGroupManager::SetDownloadedData(const std::string& groups, const std::string& views, bool finished) {
  m_impl->m_texts.Set(groups, views, finished);
}

void CViewGroupManager::NotifyViewsUpdate(const std::string& data) {
  m_impl->m_viewsCallback.Call(data);
}

void CViewGroupManager::NotifyViewGroupsUpdate(const std::string& data) {
  m_impl->m_groupsCallback.Call(data);
}

}  // namespace ResourceStore
