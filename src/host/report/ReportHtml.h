// SPDX-License-Identifier: Apache-2.0
// A report as an HTML page. It is complete in itself but for the drawings, works without its script, and fetches
// nothing. Whatever the names in it hold, they stay text.
#pragma once

#include <functional>
#include <string>

#include "host/report/Report.h"

namespace host {

struct ReportLook {
  std::string styles;
  std::string script;
};

struct ReportDrawings {
  // The HTML that shows the drawing of a page of a view, named by the element with the id WordsId.
  std::function<std::string(const ReportView& view, size_t page)> show;
  // What the drawings refer to; asked for behind the last of them. May be empty.
  std::function<std::string()> definitions;
  bool areImages = false;  // of files beside the page
};

std::string WordsId(const ReportView& view, size_t page);

std::string WriteReport(const Report& report, const ReportLook& look, const ReportDrawings& drawings);

// What tells an index page of ours from another file.
inline constexpr const char* kReportMark = "<meta name=\"generator\" content=\"viewctl report\"/>";

// The parts of the page.
std::string WriteNavigation(const Report& report);
std::string WriteViews(const Report& report, const ReportDrawings& drawings);
std::string WriteResources(const Report& report);

// How many resources each of the three lists has.
struct ResourceCounts {
  size_t shown = 0;
  size_t unused = 0;
  size_t gone = 0;
};
ResourceCounts CountResources(const Report& report);

// Indices of all folders, each before what lies in it.
std::vector<size_t> FoldersInOrder(const ViewTree& tree);
// "Public views / Station", and without the last name.
std::string HtmlPath(const ViewTree& tree, size_t folder);

}  // namespace host
