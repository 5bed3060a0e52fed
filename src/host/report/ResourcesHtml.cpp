// SPDX-License-Identifier: Apache-2.0
// WriteResources (ReportHtml.h): where each is shown, which are shown nowhere, which are gone.
#include <algorithm>
#include <cctype>

#include "host/report/Html.h"
#include "host/report/ReportHtml.h"

namespace host {
namespace {

enum class Part { kShown, kUnused, kGone };

// Web pages are on no server of ours, so they cannot be gone from it.
bool IsIn(Part part, const ReportResource& resource) {
  const bool isThere = resource.isOnServer || resource.kind == "web page";
  switch (part) {
    case Part::kShown:
      return isThere && !resource.uses.empty();
    case Part::kUnused:
      return isThere && resource.uses.empty();
    default:
      return !isThere;
  }
}

size_t Count(const Report& report, Part part) {
  return static_cast<size_t>(std::count_if(report.resources.begin(), report.resources.end(),
                                           [&](const ReportResource& resource) { return IsIn(part, resource); }));
}

std::string Headline(const std::string& kind) {
  std::string text = kind + "s";
  text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

std::string WriteWindow(const Use& use) {
  const std::string text = "page " + std::to_string(use.page) + " window " + std::to_string(use.window);
  return use.how.empty() ? text : text + " (" + use.how + ")";
}

// The view once, and all of its windows that show the resource.
std::string WriteUses(const Report& report, const std::vector<Use>& uses) {
  std::string text;
  for (size_t i = 0; i < uses.size();) {
    const ReportView& view = report.views[uses[i].view];
    text += "<li><a href=\"#v" + Html(view.id) + "\">" + HtmlName(view.name) + "</a> <span class=\"about\">";
    text += WriteWindow(uses[i]);
    const size_t first = i;
    for (++i; i < uses.size() && uses[i].view == uses[first].view; ++i) text += ", " + WriteWindow(uses[i]);
    text += "</span></li>";
  }
  return text.empty() ? "" : Tagged("ul", text);
}

std::string WriteResource(const Report& report, const ReportResource& resource) {
  const bool isNamed = !resource.name.empty() || resource.kind != "web page";
  std::string text = isNamed ? HtmlName(resource.name) : Tagged("bdi", Html(resource.id));
  std::string about = isNamed ? Html(resource.kind + " " + resource.id) : "";
  if (!resource.site.empty()) about += " · site " + Html(resource.site);
  if (!about.empty()) text += " <span class=\"about\">" + about + "</span>";
  return "<li class=\"resource\"><div>" + text + "</div>" + WriteUses(report, resource.uses) + "</li>\n";
}

// One list for each kind.
std::string WriteKinds(const Report& report, Part part) {
  std::string text, kind, list;
  size_t count = 0;
  const auto finish = [&] {
    if (list.empty()) return;
    text += "<details class=\"kind\" open=\"\"><summary>" + Tagged("h3", Headline(kind)) + " <span class=\"about\">" +
            std::to_string(count) + "</span></summary>\n<ul>\n" + list + "</ul></details>\n";
    list.clear();
    count = 0;
  };
  for (const ReportResource& resource : report.resources) {
    if (!IsIn(part, resource)) continue;
    if (resource.kind != kind) finish();
    kind = resource.kind;
    list += WriteResource(report, resource);
    ++count;
  }
  finish();
  return text;
}

std::string WritePart(const Report& report, Part part, const std::string& id, const char* title, const char* about,
                      const char* none) {
  const std::string kinds = WriteKinds(report, part);
  return "<section class=\"resources\" aria-labelledby=\"" + id + "\">\n<h2 id=\"" + id + "\">" + title + "</h2>\n" +
         Tagged("p", kinds.empty() ? none : about) + "\n" + kinds + "</section>\n";
}

}  // namespace

ResourceCounts CountResources(const Report& report) {
  return {Count(report, Part::kShown), Count(report, Part::kUnused), Count(report, Part::kGone)};
}

std::string WriteResources(const Report& report) {
  return WritePart(report, Part::kShown, "shown", "Where resources are shown",
                   "Each with the views that show it, and in which windows.", "No view shows a resource.") +
         WritePart(report, Part::kUnused, "unused", "Shown in no view",
                   "The server has these, and none of the views above shows them; others' views may.",
                   "Each resource of the server is shown in a view.") +
         WritePart(report, Part::kGone, "gone", "Shown, but gone",
                   "The server no longer has these, or not of that kind.",
                   "Every resource that views show is on the server.");
}

}  // namespace host
