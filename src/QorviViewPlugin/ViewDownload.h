// SPDX-License-Identifier: Apache-2.0
// The platform's download of view groups and views. The first load and the catching up read its lists. Any thread.
#pragma once

#include <thread>

#include "ResourceStore/ViewGroupManager.h"

namespace QorviViewPlugin {

inline ResourceStore::CViewGroupManager& ViewDownload() {
  return Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
}

// Returns once the platform reports the download finished, however long that takes.
inline void WaitForViewDownload() {
  while (!ViewDownload().IsViewDownloadSuccess()) std::this_thread::yield();
}

}  // namespace QorviViewPlugin
