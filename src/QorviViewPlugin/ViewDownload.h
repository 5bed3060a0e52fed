// SPDX-License-Identifier: Apache-2.0
// The platform's download of view groups and views, on whose texts the first load and the change callbacks work. Any
// thread.
#pragma once

#include "ResourceStore/ViewGroupManager.h"

namespace QorviViewPlugin {

inline ResourceStore::CViewGroupManager& ViewDownload() {
  return Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
}

// Returns once the platform reports the download finished, however long that takes.
void WaitForViewDownload();

}  // namespace QorviViewPlugin
