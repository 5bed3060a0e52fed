// SPDX-License-Identifier: Apache-2.0
#include "drawing/Words.h"

namespace drawing {
namespace {

QString Quoted(const QString& name) {
  return "“" + name + "”";
}

// Three decimals at most, none at the end that says nothing.
QString Short(double number) {
  QString text = QString::number(number, 'f', 3);
  while (text.endsWith('0')) text.chop(1);
  if (text.endsWith('.')) text.chop(1);
  return text == "-0" ? "0" : text;
}

QString Point(const QPointF& point) {
  return Short(point.x()) + "," + Short(point.y());
}

QString Corners(const QRectF& box) {
  return Point(box.topLeft()) + " to " + Point(box.bottomRight());
}

void AddWhatAndWhere(const Window& window, std::vector<Fact>& facts) {
  QString what = WordOf(window.type) + (window.id.isEmpty() ? "" : " " + window.id);
  const bool standsForSeveralTypes =
      window.kind == WindowKind::kElement || window.kind == WindowKind::kText || window.kind == WindowKind::kOther;
  if (standsForSeveralTypes) what += " of type " + QString::number(window.type);
  facts.push_back({Mark::kNone, what});
  QStringList where;
  if (!window.site.isEmpty()) where += "site " + window.site;
  // Every window has a stream, but only a camera has a use for it.
  if (window.kind == WindowKind::kCamera) where += "stream " + QString::number(window.stream);
  if (!where.isEmpty()) facts.push_back({Mark::kNone, where.join(" · ")});
  if (window.kind == WindowKind::kWebPage && window.text.isEmpty()) facts.push_back({Mark::kNone, "no address"});
}

void AddMoves(const Window& window, std::vector<Fact>& facts) {
  if (window.preset > 0) {
    const QString name = window.presetName.isEmpty() ? "" : " " + Quoted(window.presetName);
    facts.push_back({Mark::kPreset, "preset " + QString::number(window.preset) + name});
  }
  if (window.cruise > 0) facts.push_back({Mark::kMove, "cruise " + QString::number(window.cruise)});
  if (window.track > 0) facts.push_back({Mark::kMove, "track " + QString::number(window.track)});
}

void AddRelated(const Related& related, std::vector<Fact>& facts) {
  const QString name = related.name.isEmpty() ? "" : " " + Quoted(related.name);
  facts.push_back({Mark::kRelated, "related: " + related.word + " " + related.id + name});
}

void AddZoom(const Window& window, std::vector<Fact>& facts) {
  if (window.digitalZoom) facts.push_back({Mark::kDigitalZoom, "digital zoom " + Corners(*window.digitalZoom)});
  if (window.mark) {
    facts.push_back({Mark::kCentreMark, "centre mark " + Corners(window.mark->box)});
    facts.push_back({Mark::kNone, "stream " + QString::number(window.mark->stream), true});
  }
  if (window.shows) {
    const QString text =
        "shows zoom window " + QString::number(window.shows->zoomWindow) + " of window " + window.shows->window;
    facts.push_back({Mark::kZoomWindow, text, false, window.shows->zoomWindow});
    if (!window.shows->isOnPage) facts.push_back({Mark::kNone, "which this page does not have", true});
  }
  for (const ZoomWindow& zoom : window.zoomWindows) {
    const QString where = zoom.box.isEmpty() ? QString("nowhere") : Corners(zoom.box);
    facts.push_back(
        {Mark::kZoomWindow, "zoom window " + QString::number(zoom.number) + " at " + where, false, zoom.number});
  }
  if (!window.zoomWindows.empty())
    facts.push_back({Mark::kNone, "zoom mode " + QString::number(window.zoomMode), true});
}

void AddFishEye(const FishEye& fishEye, std::vector<Fact>& facts) {
  facts.push_back({Mark::kFishEye, "fisheye: mount " + QString::number(fishEye.mount) + ", expansion " +
                                       QString::number(fishEye.expansion) + ", window " +
                                       QString::number(fishEye.window)});
  for (const FishEye::Part& part : fishEye.parts) {
    facts.push_back({Mark::kNone,
                     "part " + QString::number(part.number) + " at " + Point(part.centre) + " ×" + Short(part.zoom),
                     true});
  }
}

void AddCycle(const Cycle& cycle, std::vector<Fact>& facts) {
  facts.push_back({Mark::kCycle, "cycle" + (cycle.name.isEmpty() ? "" : " " + Quoted(cycle.name))});
  const size_t count = cycle.resources.size();
  const QString what = cycle.type == 0 ? "camera" : cycle.type == 1 ? "area" : "resource";
  facts.push_back({Mark::kNone,
                   QString::number(count) + " " + what + (count == 1 ? "" : "s") + ", " +
                       QString::number(cycle.seconds) + " s each:",
                   true});
  for (const Cycle::Resource& resource : cycle.resources) {
    const QString name = resource.name.isEmpty() ? (what + " " + resource.id).trimmed() : resource.name;
    facts.push_back({Mark::kNone, name, true});
  }
}

void AddMap(const Map& map, std::vector<Fact>& facts) {
  const QString centre = map.x.isEmpty() && map.y.isEmpty() ? "no centre" : "centre " + map.x + ", " + map.y;
  facts.push_back({Mark::kMap, centre});
  facts.push_back({Mark::kMap, "scale " + QString::number(map.scale)});
  facts.push_back({Mark::kNone, "load mode " + QString::number(map.loadMode), true});
  if (!map.info.isEmpty()) facts.push_back({Mark::kNone, map.info, true});
}

}  // namespace

std::vector<Fact> FactsOf(const Window& window) {
  if (window.kind == WindowKind::kEmpty) return {{Mark::kNone, WordOf(window.type)}};
  std::vector<Fact> facts;
  AddWhatAndWhere(window, facts);
  AddMoves(window, facts);
  if (window.related) AddRelated(*window.related, facts);
  AddZoom(window, facts);
  if (window.fishEye) AddFishEye(*window.fishEye, facts);
  if (window.cycle) AddCycle(*window.cycle, facts);
  if (window.map) AddMap(*window.map, facts);
  // A camera's text is its preset's name once more.
  const bool isNew = window.text != window.name && window.text != window.presetName;
  if (!window.text.isEmpty() && isNew) facts.push_back({Mark::kNone, Quoted(window.text)});
  return facts;
}

QString InWords(const Page& page) {
  QString text = HeadOf(page);
  for (const Window& window : page.windows) {
    text += "\n" + QString::number(window.number) + ". " + window.name;
    // What a cycle goes through follows a colon.
    for (const Fact& fact : FactsOf(window)) text += (text.endsWith(':') ? " " : "; ") + fact.text;
  }
  return text;
}

QString HeadOf(const Page& page) {
  if (page.count == 0) return "No pages";
  QString text = "Page " + QString::number(page.number);
  if (page.count > 1) text += " of " + QString::number(page.count);
  if (page.turnedAfter > 0) text += ", turned every " + QString::number(page.turnedAfter) + " s";
  text += " · layout " + QString::number(page.division);
  if (!page.customDivision.isEmpty()) text += " " + Quoted(page.customDivision);
  const size_t count = page.windows.size();
  return text + " · " + QString::number(count) + (count == 1 ? " window" : " windows");
}

}  // namespace drawing
