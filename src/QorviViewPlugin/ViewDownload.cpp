// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDownload.h"

#include <thread>

namespace QorviViewPlugin {

void WaitForViewDownload() {
  while (!ViewDownload().IsViewDownloadSuccess()) std::this_thread::yield();
}

}  // namespace QorviViewPlugin
