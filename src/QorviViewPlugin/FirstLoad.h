// SPDX-License-Identifier: Apache-2.0
// First load of the cache, and the change callbacks that the polls for it register with the platform.
// IsInitViewGroupFinish, IsInitViewFinish and ClearViewData are defined with them; their contract stands in
// QorviViewPlugin.h.
#pragma once

#include <string>

namespace QorviViewPlugin {

// Whether the first load of view groups, or of views, has been made, by a poll or by EnsureLoaded, since the last
// ClearViewData. Any thread.
bool IsViewGroupLoadDone();
bool IsViewLoadDone();

// Waits for the platform's download, however long that takes, and loads what has not been loaded yet. Any thread.
void EnsureLoaded();

// The change callbacks: take a change document from the platform. Any thread; nothing is thrown.
void ViewDataResourceUpdate(const std::string& data);
void ViewGroupDataResourceUpdate(const std::string& data);

}  // namespace QorviViewPlugin
