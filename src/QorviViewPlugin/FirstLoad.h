// SPDX-License-Identifier: Apache-2.0
// First load of the cache and the change callbacks. IsInitViewGroupFinish, IsInitViewFinish and ClearViewData are
// defined here too; their contract stands in QorviViewPlugin.h.
#pragma once

namespace QorviViewPlugin {

// Whether the first load of view groups, or of views, has been done since the last ClearViewData. Any thread.
bool IsViewGroupLoadDone();
bool IsViewLoadDone();

}  // namespace QorviViewPlugin
