// SPDX-License-Identifier: Apache-2.0
// The 23 functions for a host that loads the library by its name and links nothing of it: their names and types, once.
// What each does is said in QorviViewPlugin.h.
//
//     QLibrary library("QorviViewPlugin");
//     QorviViewPlugin::Functions views;
//     if (const char* missing = views.Load([&](const char* name) { return library.resolve(name); })) { /* not it */ }
//     views.GetPlanGroups(request, response);
#pragma once

#include "QorviViewPlugin/QorviViewPlugin.h"

// FUNCTION(name) for each of them, in the header's order.
#define QORVI_EXPORTED_FUNCTIONS(FUNCTION) \
  FUNCTION(InitEnvir)                      \
  FUNCTION(UnInitEnvir)                    \
  FUNCTION(ClearViewData)                  \
  FUNCTION(IsViewResourceDownFinish)       \
  FUNCTION(IsSupportPlanChangeOrder)       \
  FUNCTION(IsInitViewGroupFinish)          \
  FUNCTION(IsInitViewFinish)               \
  FUNCTION(GetPlanGroups)                  \
  FUNCTION(AddPlanGroup)                   \
  FUNCTION(UpdatePlanGroup)                \
  FUNCTION(DeletePlanGroup)                \
  FUNCTION(GetPlansInGroup)                \
  FUNCTION(GetPlanDetail)                  \
  FUNCTION(GetPlanConfig)                  \
  FUNCTION(AddPlan)                        \
  FUNCTION(UpdatePlan)                     \
  FUNCTION(DeletePlan)                     \
  FUNCTION(GetCurrentUser)                 \
  FUNCTION(GetAllUserInfo)                 \
  FUNCTION(ViewShareUsers)                 \
  FUNCTION(GetClientViewConfig)            \
  FUNCTION(SetClientViewConfig)            \
  FUNCTION(ViewRegisterResourceUpdate)

namespace QorviViewPlugin {

// Pointers to them under their own names. They are good until the library is unloaded.
struct Functions {
#define QORVI_FUNCTION(name) decltype(&::name) name = nullptr;
  QORVI_EXPORTED_FUNCTIONS(QORVI_FUNCTION)
#undef QORVI_FUNCTION

  // Fills all of them from resolve(name), which answers a function's address or null. Answers null, or the name of the
  // first function that is missing; the pointers are those found so far then, and the library is not the right one.
  template <class Resolve>
  const char* Load(Resolve&& resolve) {
#define QORVI_FUNCTION(name)                                  \
  name = reinterpret_cast<decltype(&::name)>(resolve(#name)); \
  if (!name) return #name;
    QORVI_EXPORTED_FUNCTIONS(QORVI_FUNCTION)
#undef QORVI_FUNCTION
    return nullptr;
  }
};

}  // namespace QorviViewPlugin
