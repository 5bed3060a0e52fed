// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/StreamTimings.h"

#include <mutex>

namespace ResourceStore::details {

namespace {
std::mutex s_mutex;
StreamTimings s_timings;
}  // namespace

void SetStreamTimings(const StreamTimings& timings) {
  std::lock_guard<std::mutex> lock(s_mutex);
  s_timings = timings;
}

StreamTimings GetStreamTimings() {
  std::lock_guard<std::mutex> lock(s_mutex);
  return s_timings;
}

}  // namespace ResourceStore::details
