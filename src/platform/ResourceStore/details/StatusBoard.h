// SPDX-License-Identifier: Apache-2.0
// For this library and the platform's tests, not for hosts.
#pragma once

#include <functional>

#include "ResourceStore/DownloadStatus.h"
#include "ResourceStore/Export.h"
#include "ResourceStore/UpdateCallbackSlot.h"
#include "base/Mutex.h"

namespace ResourceStore::details {

// The status of the download and the one who hears of it. Any thread; no lock is held across calls.
class RESOURCESTORE_API StatusBoard {
 public:
  using Callback = std::function<void(const DownloadStatus&)>;

  DownloadStatus Get() const;
  // As UpdateCallbackSlot::Set.
  void SetCallback(Callback callback);

  // Another run, or none; told by whoever calls Tell.
  void Begin(DownloadState state);
  // What changes the state is told at once.
  void Become(DownloadState state);
  void Fail(const Vant::Base::Error::ErrorCode& error, int systemError);
  // Hands the present status to the callback.
  void Tell() { m_slot.Call({}); }

 private:
  void Enter(DownloadState state) REQUIRES(m_mutex);

  UpdateCallbackSlot m_slot;
  mutable base::Mutex m_mutex;
  DownloadStatus m_status GUARDED_BY(m_mutex);
};

}  // namespace ResourceStore::details
