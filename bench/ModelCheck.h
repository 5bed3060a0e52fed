// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SiteData.h"

namespace bench {

// Fails the run unless the cache holds the views of that site and nothing else, each also in its group.
void CheckCache(const SiteSize& size);

}  // namespace bench
