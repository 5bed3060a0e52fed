// SPDX-License-Identifier: Apache-2.0
// The exported functions that neither load nor exchange anything: start, stop, the switches, registration.
#include <atomic>
#include <utility>

#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDownload.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"

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

void ViewRegisterResourceUpdate(ResourceData::IResourceObserver* observer, std::string request) {
  using QorviViewPlugin::CViewResourceUpdateManager;
  // There is nobody to report a failure to.
  QorviViewPlugin::Guarded(false, [&] {
    Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().RegisterResourceUpdate(observer, std::move(request));
    return true;
  });
}
