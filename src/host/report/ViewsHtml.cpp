// SPDX-License-Identifier: Apache-2.0
// WriteViews (ReportHtml.h): folder by folder, each view with its pages.
#include "host/Terminal.h"
#include "host/report/Html.h"
#include "host/report/ReportHtml.h"

namespace host {
namespace {

class ViewsWriter {
 public:
  ViewsWriter(const Report& report, const ReportDrawings& drawings) : m_report(report), m_drawings(drawings) {}

  std::string Text() {
    std::vector<std::vector<const ReportView*>> byFolder(m_report.tree.folders.size());
    for (const ReportView& view : m_report.views) byFolder[view.folder].push_back(&view);
    std::string text = "<section aria-labelledby=\"views\">\n<h2 id=\"views\">Views</h2>\n";
    for (const size_t folder : FoldersInOrder(m_report.tree)) text += Folder(folder, byFolder[folder]);
    return text + "</section>\n";
  }

 private:
  std::string Folder(size_t index, const std::vector<const ReportView*>& views) const {
    const TreeFolder& folder = m_report.tree.folders[index];
    std::string text = "<details class=\"folder\" open=\"\" id=\"f" + std::to_string(index) + "\"><summary>";
    text += Tagged("h3", HtmlPath(m_report.tree, index));
    std::string about = views.empty() ? "no views" : Counted(views.size(), "view");
    if (folder.parent != index) about = "group " + Html(folder.id) + " · " + about;
    text += " <span class=\"about\">" + about + "</span>";
    if (index == m_report.defaultFolder) text += " <span class=\"mark\">opens first</span>";
    text += "</summary>\n";
    for (const ReportView* view : views) text += View(*view);
    return text + "</details>\n";
  }

  std::string View(const ReportView& view) const {
    std::string text = "<article class=\"view\" id=\"v" + Html(view.id) + "\"><details open=\"\"><summary>";
    text += Tagged("h4", HtmlName(view.name)) + " <span class=\"about\">view " + Html(view.id) + " · ";
    text +=
        view.pages.empty() ? "no pages" : Counted(view.pages.size(), "page") + " · " + Counted(view.windows, "window");
    text += "</span>";
    if (view.isDefault) text += " <span class=\"mark\">opens first</span>";
    if (!view.sharedBy.empty()) text += " <span class=\"mark\">shared by " + HtmlName(view.sharedBy) + "</span>";
    text += "</summary>\n" + Facts(view);
    for (size_t page = 0; page < view.pages.size(); ++page) text += Page(view, page);
    return text + "</details></article>\n";
  }

  std::string Facts(const ReportView& view) const {
    std::string text = "<dl class=\"facts\">";
    text += Fact("Owner", Owner(view)) + Fact("Seen by", SeenBy(view));
    if (view.turnedAfter > 0) text += Fact("Pages", "turned every " + std::to_string(view.turnedAfter) + " s");
    if (!view.guid.empty()) text += Fact("GUID", Html(view.guid));
    return text + "</dl>\n";
  }

  static std::string Fact(const char* what, const std::string& value) {
    return "<div>" + Tagged("dt", what) + Tagged("dd", value) + "</div>";
  }

  bool IsPublic(const ReportView& view) const { return m_report.tree.folders[view.folder].kind == kPublic; }

  std::string Owner(const ReportView& view) const {
    if (!view.sharedBy.empty()) return HtmlName(view.sharedBy);
    return IsPublic(view) ? "nobody" : HtmlName(m_report.user);
  }

  // A server tells nobody whom a view is shared with.
  std::string SeenBy(const ReportView& view) const {
    if (!view.sharedBy.empty()) return "its owner, " + HtmlName(m_report.user) + " and others that it is shared with";
    return IsPublic(view) ? "everybody" : "its owner and those that it is shared with";
  }

  std::string Page(const ReportView& view, size_t index) const {
    const ReportPage& page = view.pages[index];
    std::string text = "<figure><div class=\"sheet\"><figcaption>" + HtmlLine(page.head) + "</figcaption>";
    text += m_drawings.show(view, index) + "</div>";
    text += "<details class=\"words\"><summary>Page " + std::to_string(index + 1) + " in words</summary>";
    return text + "<p id=\"" + WordsId(view, index) + "\">" + HtmlWords(page.words) + "</p></details></figure>\n";
  }

  const Report& m_report;
  const ReportDrawings& m_drawings;
};

}  // namespace

std::string HtmlPath(const ViewTree& tree, size_t folder) {
  size_t top = folder;
  while (tree.folders[top].parent != top) top = tree.folders[top].parent;
  std::string text = HtmlName(tree.folders[top].name);
  for (const std::string& name : tree.PathOf(folder)) text += " / " + HtmlName(name);
  return text;
}

std::string WriteViews(const Report& report, const ReportDrawings& drawings) {
  return ViewsWriter(report, drawings).Text();
}

}  // namespace host
