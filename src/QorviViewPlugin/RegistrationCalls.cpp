// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"

void ViewRegisterResourceUpdate(ResourceData::IResourceObserver* observer, std::string request) {
  using QorviViewPlugin::CViewResourceUpdateManager;
  // There is nobody to report a failure to.
  QorviViewPlugin::Guarded(false, [&] {
    Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().RegisterResourceUpdate(observer, std::move(request));
    return true;
  });
}
