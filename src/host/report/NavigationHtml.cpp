// SPDX-License-Identifier: Apache-2.0
// WriteNavigation (ReportHtml.h): the folders and the views in them, as links.
#include "host/report/Html.h"
#include "host/report/ReportHtml.h"

namespace host {
namespace {

// A browser keeps lists within lists up to some hundred; what lies deeper stands beside what it lies in.
constexpr size_t kDeepest = 24;

size_t DepthOf(const ViewTree& tree, size_t folder) {
  size_t depth = 0;
  for (; tree.folders[folder].parent != folder; folder = tree.folders[folder].parent) ++depth;
  return std::min(depth, kDeepest);
}

std::string WriteLinks(const std::vector<TreeView>& views) {
  std::string text;
  for (const TreeView& view : views) {
    const std::string id = Html(view.id);
    text += "<li class=\"view-link\"><a href=\"#v" + id + "\">" + HtmlName(view.name) + "</a></li>";
  }
  return text;
}

}  // namespace

std::string WriteNavigation(const Report& report) {
  std::string text = "<nav aria-label=\"Folders and views\">\n<details open=\"\"><summary>Folders and views</summary>";
  const std::vector<size_t> order = FoldersInOrder(report.tree);
  text += "\n<ul>";
  for (size_t i = 0; i < order.size(); ++i) {
    const TreeFolder& folder = report.tree.folders[order[i]];
    const size_t depth = DepthOf(report.tree, order[i]);
    const size_t next = i + 1 < order.size() ? DepthOf(report.tree, order[i + 1]) : 0;
    text += "<li><details open=\"\"><summary>" + HtmlName(folder.name) + "</summary><ul>";
    // The views of a folder stand before the folders in it, as in the sections.
    text += WriteLinks(folder.views);
    if (folder.views.empty() && folder.folders.empty()) text += "<li>Empty</li>";
    for (size_t open = next; open <= depth; ++open) text += "</ul></details></li>";
    text += "\n";
  }
  return text + "</ul></details>\n</nav>\n";
}

}  // namespace host
