// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/report/Report.h"

namespace host {

// All pages of a view as one SVG file, one below the other. Its fragment p2 shows the second page alone.
std::string StackDrawings(const ReportView& view, const std::string& rules);

struct DrawingSize {
  int width = 0;
  int height = 0;
};
// That of a short drawing.
DrawingSize SizeOf(const std::string& drawing);

}  // namespace host
