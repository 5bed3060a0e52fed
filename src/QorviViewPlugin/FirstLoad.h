// SPDX-License-Identifier: Apache-2.0
// First load of the cache and the change callbacks. IsInitViewGroupFinish, IsInitViewFinish and ClearViewData are
// defined here too; their contract stands in QorviViewPlugin.h.
#pragma once

#include <string>

namespace QorviViewPlugin {

// Whether the first load of view groups, or of views, has been done since the last ClearViewData. Any thread.
bool IsViewGroupLoadDone();
bool IsViewLoadDone();

// Waits for the platform's download and loads what has not been loaded yet. The change callbacks are registered with
// it.
void EnsureLoaded();

// The change callbacks: take a change document from the platform. Any thread; nothing is thrown.
void ViewDataResourceUpdate(const std::string& data);
void ViewGroupDataResourceUpdate(const std::string& data);

}  // namespace QorviViewPlugin
