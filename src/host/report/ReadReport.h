// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Drawer.h"
#include "host/Plugin.h"
#include "host/report/Report.h"

namespace host {

// All there is to say of the site, with every page drawn. REQUIRES: the views are loaded. Throws Failure kRefused when
// an exchange fails or a page cannot be drawn.
Report ReadReport(const Plugin& plugin, Drawer& drawer);

}  // namespace host
