// SPDX-License-Identifier: Apache-2.0
// What a host that builds as C++17 includes and uses; compiled, never run.
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"

static_assert(__cplusplus == 201703L, "this file stands for C++17 hosts");

std::string AsAHostWould(unsigned int id) {
  using namespace QorviViewPlugin;
  std::string response;
  if (!FindViewByID(id) || !FindViewGroupByID(id)) GetPlanGroups("", response);
  CCameraGridStruct window;
  window.SetVal_struRect(std::make_shared<CRectangle>(Rectangle{}));
  window.SetVal_single_cycle(std::make_shared<CSingleWndCycle>());
  Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().RegisterMultResourceUpdate({}, "");
  return response + window.GetVal_map_center_x();
}
