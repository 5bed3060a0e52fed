// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/report/Report.h"

namespace host {

// A page's drawing as an SVG file: complete in itself, with the view's name and the page in words.
std::string DrawingFile(const ReportView& view, const ReportPage& page, const std::string& rules);

struct DrawingSize {
  int width = 0;
  int height = 0;
};
// That of a short drawing.
DrawingSize SizeOf(const std::string& drawing);

}  // namespace host
