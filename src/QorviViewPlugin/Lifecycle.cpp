// SPDX-License-Identifier: Apache-2.0
#include <atomic>

#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDownload.h"

namespace {

std::atomic<bool> s_bEnvirInit{false};

}  // namespace

bool InitEnvir() {
  // Nothing else to do: what the library needs is made on first use.
  s_bEnvirInit = true;
  return true;
}

bool UnInitEnvir() {
  s_bEnvirInit = false;
  return true;
}

bool IsSupportPlanChangeOrder() {
  return true;
}

bool IsViewResourceDownFinish() {
  return QorviViewPlugin::Guarded(false, [] { return QorviViewPlugin::ViewDownload().IsViewDownloadSuccess(); });
}
