// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "drawing/Page.h"

namespace host {

// The page as it may be shown on a terminal of so many columns: its head, and its grid in box characters. In each
// window its number and name and as many lines about it as its row has; names are cut with an ellipsis. Grids of many
// columns are wider than a narrow terminal, lest nothing of the names be left.
std::string DescribePage(const drawing::Page& page, int columns);

}  // namespace host
