// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"

void ViewRegisterResourceUpdate(ResourceData::IResourceObserver* observer, std::string request) {
  using QorviViewPlugin::CViewResourceUpdateManager;
  try {
    Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().RegisterResourceUpdate(observer, std::move(request));
  } catch (...) {
    // There is nobody to tell: the registration did not take place.
  }
}
