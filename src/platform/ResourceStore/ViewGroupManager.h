// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ResourceStore/DownloadStatus.h"
#include "ResourceStore/Export.h"
#include "VantBase/Singleton.h"

namespace ResourceStore {
class CViewGroupManager;
}
extern template class RESOURCESTORE_TEMPLATE_API Vant::Base::CSingleton<ResourceStore::CViewGroupManager>;

namespace ResourceStore {

// The platform's download of areas, view groups and views; the library's cache of them has the same name
// (QorviViewPlugin::CViewGroupManager). Downloads on a thread of its own, keeps the raw texts of groups and views up to
// date from the server's change stream, and calls back with changes. Any thread. In a child by fork (NetCommManager.h)
// the texts stay as they were and nothing is called back.
class RESOURCESTORE_API CViewGroupManager : public Vant::Base::CSingleton<CViewGroupManager> {
 public:
  using UpdateCallback = std::function<void(const std::string&)>;

  ~CViewGroupManager();  // stops

  // True once areas, groups and views have been downloaded, until Stop.
  bool IsViewDownloadSuccess() const;
  // The present list reply of all views or groups, every change that was called back included. Empty before the
  // download and after Stop.
  void GetViewsData(std::string& data) const;
  void GetViewGroupsData(std::string& data) const;

  // The one receiver of change documents of views or groups (an empty function withdraws it). Documents come in the
  // server's order, from one thread, after the texts above hold the change. The user's own edits are called back only
  // in the four cases of details/ChangeRelay.h; the change numbers tell a receiver whether it has them already. The
  // setter waits until a running call of the old callback has returned, unless it is called from within that call.
  // Callbacks run without a lock held.
  void SetViewsUpdateCallback(UpdateCallback callback);
  void SetViewGroupsUpdateCallback(UpdateCallback callback);

  // Host set-up: starts the download over the transport's server with its token, then follows the changes. A list
  // that fails is fetched again after a pause (0.25 s, doubling to 30 s). Harmless when running.
  void Start();
  // Host set-up, before or at logout: ends the thread and forgets the texts; the callbacks stay. Not to be called from
  // a callback. Harmless when not running.
  void Stop();

  // Host set-up: how far the download is. Any thread; asks nobody. NotStarted in a child by fork.
  DownloadStatus GetDownloadStatus() const;
  // Host set-up: the one who is told whenever the status changes, and after each attempt that fails, with the status as
  // it is by then; an empty function withdraws it. Called on the download's thread, and with NotStarted on the thread
  // that stops it, without a lock held: it may ask everything here, must not stop the download, and whatever takes long
  // keeps the download waiting. The setter waits for a running call as those above do.
  using StatusCallback = std::function<void(const DownloadStatus&)>;
  void SetDownloadStatusCallback(StatusCallback callback);

  // Seams for tests, used without Start: the downloaded texts and whether the download counts as finished.
  void SetDownloadedData(const std::string& groups, const std::string& views, bool finished);
  // As if the lists had been downloaded again after changes were lost: calls back with the difference.
  void SetDownloadedAgain(const std::string& groups, const std::string& views);
  // As if the change stream had brought an event of that number and type: the texts take it, and it is called back if
  // it is to be, on the calling thread.
  void TakeChange(unsigned long long number, const std::string& event, const std::string& data);
  // Calls back what the ends of edits have left to be told, as the thread does as soon as it can.
  void TellDueChanges();
  // Calls back with a change document as if it had arrived, on the calling thread. The texts stay as they are.
  void NotifyViewsUpdate(const std::string& data);
  void NotifyViewGroupsUpdate(const std::string& data);

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CViewGroupManager();
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace ResourceStore
