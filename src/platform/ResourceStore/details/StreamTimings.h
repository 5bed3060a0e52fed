// SPDX-License-Identifier: Apache-2.0
// For this library and the platform's tests, not for hosts.
#pragma once

#include <chrono>

#include "ResourceStore/Export.h"

namespace ResourceStore::details {

// The waits of the view download and its change stream.
struct StreamTimings {
  std::chrono::milliseconds firstPause{250};  // before a failed request is repeated; doubles each time
  std::chrono::milliseconds longestPause{30000};
  std::chrono::milliseconds silence{45000};      // a change stream that is silent for that long counts as lost
  std::chrono::milliseconds listTimeout{60000};  // for one list as a whole
};

// Take effect at the next CViewGroupManager::Start. Any thread.
RESOURCESTORE_API void SetStreamTimings(const StreamTimings& timings);
StreamTimings GetStreamTimings();

}  // namespace ResourceStore::details
