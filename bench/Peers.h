// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "Report.h"
#include "SiteData.h"

namespace bench {

// Rows of what other readers take for the site's list of views, beside what `parsing` makes.
void CompareReaders(const SiteSize& size, const std::string& text, const std::function<Side()>& parsing);

}  // namespace bench
