// SPDX-License-Identifier: Apache-2.0
#include "host/report/ReportHtml.h"

#include <QCryptographicHash>

#include "host/Terminal.h"
#include "host/report/Html.h"

namespace host {
namespace {

// Nothing is fetched and no script but our own runs, even if a name should find a way to be more than text.
std::string ContentPolicy(const std::string& script, bool hasImages) {
  const QByteArray hash = QCryptographicHash::hash(QByteArray::fromStdString(script), QCryptographicHash::Sha256);
  return "default-src 'none'; base-uri 'none'; form-action 'none'; style-src 'unsafe-inline'; script-src 'sha256-" +
         hash.toBase64().toStdString() + "'" + (hasImages ? "; img-src 'self' file:" : "");
}

std::string TitleOf(const Report& report) {
  return "Views of " + report.user;
}

std::string WriteHead(const Report& report, const ReportLook& look, const ReportDrawings& drawings) {
  std::string text = "<head>\n<meta charset=\"utf-8\"/>\n<meta http-equiv=\"Content-Security-Policy\" content=\"";
  text += ContentPolicy(look.script, drawings.areImages) + "\"/>\n";
  text += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n";
  text += std::string(kReportMark) + "\n<meta name=\"color-scheme\" content=\"light dark\"/>\n";
  text += Tagged("title", Html(TitleOf(report))) + "\n";
  return text + Tagged("style", look.styles + report.drawingRules) + "\n</head>\n";
}

std::string WriteDefault(const Report& report) {
  if (report.defaultId.empty()) return "No view opens first.";
  for (const ReportView& view : report.views) {
    if (view.isDefault) return "Opens first: <a href=\"#v" + Html(view.id) + "\">" + HtmlName(view.name) + "</a>.";
  }
  if (report.defaultFolder < report.tree.folders.size()) {
    return "Opens first: the folder <a href=\"#f" + std::to_string(report.defaultFolder) + "\">" +
           HtmlName(report.tree.folders[report.defaultFolder].name) + "</a>.";
  }
  return "Opens first: view " + Html(report.defaultId) + ", which is gone.";
}

std::string Linked(const char* target, const std::string& text) {
  return "<li><a href=\"#" + std::string(target) + "\">" + text + "</a></li>";
}

std::string WriteCounts(const Report& report) {
  const ResourceCounts counts = CountResources(report);
  const size_t groups = report.tree.folders.size();
  size_t pages = 0;
  for (const ReportView& view : report.views) pages += view.pages.size();
  return "<ul class=\"counts\">" +
         Linked("views", Counted(report.views.size(), "view") + " with " + Counted(pages, "page") + " in " +
                             Counted(groups, "folder")) +
         Linked("shown", Counted(counts.shown, "resource") + " shown") +
         Linked("unused", Counted(counts.unused, "resource") + " shown in no view") +
         Linked("gone", Counted(counts.gone, "resource") + " shown, but gone") + "</ul>";
}

std::string WriteHeader(const Report& report) {
  const std::string where = report.server.empty() ? "" : " on " + Tagged("bdi", Html(report.server));
  std::string text = "<header>\n" + Tagged("h1", "Views of " + HtmlName(report.user)) + "\n";
  text += Tagged("p", "As " + HtmlName(report.user) + " saw them" + where + ", " + Html(report.written) + ". " +
                          WriteDefault(report)) +
          "\n" + WriteCounts(report) + "\n";
  // Shown by the script, which they need.
  text +=
      "<div class=\"tools\" role=\"search\" hidden=\"\"><label for=\"search\">Search names, ids and words</label>"
      "<input id=\"search\" type=\"search\" autocomplete=\"off\" spellcheck=\"false\"/>"
      "<button type=\"button\" id=\"unfold\">Unfold all views</button>"
      "<button type=\"button\" id=\"fold\">Fold all views</button>"
      "<p id=\"found\" role=\"status\"></p></div>\n";
  return text + "</header>\n";
}

}  // namespace

std::string WordsId(const ReportView& view, size_t page) {
  return "v" + Html(view.id) + "p" + std::to_string(page + 1) + "words";
}

std::vector<size_t> FoldersInOrder(const ViewTree& tree) {
  std::vector<size_t> order, waiting;
  for (size_t top = 0; top < tree.folders.size() && tree.folders[top].parent == top; ++top) {
    waiting.push_back(top);
    while (!waiting.empty()) {
      const size_t folder = waiting.back();
      waiting.pop_back();
      order.push_back(folder);
      const std::vector<size_t>& below = tree.folders[folder].folders;
      waiting.insert(waiting.end(), below.rbegin(), below.rend());
    }
  }
  return order;
}

std::string WriteReport(const Report& report, const ReportLook& look, const ReportDrawings& drawings) {
  std::string text = "<!DOCTYPE html>\n<html lang=\"en\">\n" + WriteHead(report, look, drawings) + "<body>\n";
  text += "<a class=\"skip\" href=\"#views\">To the views</a>\n" + WriteHeader(report);
  text += "<div class=\"columns\">\n" + WriteNavigation(report) + "<main>\n" + WriteViews(report, drawings);
  text += WriteResources(report) + "</main>\n</div>\n";
  if (drawings.definitions) text += drawings.definitions() + "\n";
  return text + Tagged("script", look.script) + "\n</body>\n</html>\n";
}

}  // namespace host
