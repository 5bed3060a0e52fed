// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/StreamTimings.h"

#include "base/Mutex.h"

namespace ResourceStore::details {

namespace {
base::Mutex s_mutex;
StreamTimings s_timings GUARDED_BY(s_mutex);
}  // namespace

void SetStreamTimings(const StreamTimings& timings) {
  base::MutexLock lock(s_mutex);
  s_timings = timings;
}

StreamTimings GetStreamTimings() {
  base::MutexLock lock(s_mutex);
  return s_timings;
}

}  // namespace ResourceStore::details
