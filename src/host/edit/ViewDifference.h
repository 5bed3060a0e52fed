// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "host/edit/EditableView.h"

namespace host {

// How `after` differs from `before`, a line for each difference, by page and window:
//
//   name: "Forecourt" -> "Forecourt, north"
//   page 1, window 3: ResourceID "118" -> "240"
//   page 2: new, with 4 windows
//
// Empty where both are the same.
std::vector<std::string> Differences(const EditableView& before, const EditableView& after);

}  // namespace host
