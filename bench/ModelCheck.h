// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "SiteData.h"

namespace bench {

// Whether two records hold the same, field by field, pages and windows included.
bool IsSame(const QorviViewPlugin::ViewInfo& one, const QorviViewPlugin::ViewInfo& other);

// Fails the run unless the cache holds the views of that site and nothing else, each also in its group.
void CheckCache(const SiteSize& size);

}  // namespace bench
