// SPDX-License-Identifier: Apache-2.0
#include <atomic>

#include "QorviViewPlugin/QorviViewPlugin.h"
#include "ResourceStore/ViewGroupManager.h"

namespace {

std::atomic<bool> s_bEnvirInit{false};

}  // namespace

bool InitEnvir() {
  if (!s_bEnvirInit) s_bEnvirInit = true;
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
  return Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance().IsViewDownloadSuccess();
}
