// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace host {

// From now on Ctrl-C and a request to terminate only set a flag.
void WatchForStop();
bool StopAsked();

}  // namespace host
