// SPDX-License-Identifier: Apache-2.0
#include "drawing/Page.h"

#include <QJsonArray>
#include <algorithm>
#include <cmath>

#include "drawing/SafeText.h"

namespace drawing {
namespace {

QString Text(const QJsonObject& object, const char* key) {
  return SafeText(object[QLatin1String(key)].toString());
}

int Number(const QJsonObject& object, const char* key, int otherwise = 0) {
  return object[QLatin1String(key)].toInt(otherwise);
}

// Answers have a window's ids signed, and those in cycles unsigned.
QString Id(const QJsonObject& object, const char* key) {
  QString id = Text(object, key);
  bool isSigned = false;
  if (const int number = id.toInt(&isSigned); isSigned) id = QString::number(static_cast<quint32>(number));
  if (id == "0" || id == "4294967295") id.clear();
  return id;
}

QJsonObject Object(const QJsonObject& object, const char* key) {
  return object[QLatin1String(key)].toObject();
}

QJsonArray List(const QJsonObject& object, const char* key) {
  return object[QLatin1String(key)].toArray();
}

// A decimal text; a number that no picture has reads as 0.
double Decimal(const QJsonObject& object, const char* key) {
  const double number = object[QLatin1String(key)].toString().toDouble();
  return std::isfinite(number) ? number : 0;
}

double WithinPicture(double fraction) {
  return std::clamp(fraction, 0.0, 1.0);
}

// Nothing where the corners enclose nothing.
std::optional<QRectF> BoxOf(double left, double top, double right, double bottom) {
  const QRectF box(QPointF(WithinPicture(left), WithinPicture(top)),
                   QPointF(WithinPicture(right), WithinPicture(bottom)));
  return box.width() > 0 && box.height() > 0 ? std::optional(box) : std::nullopt;
}

std::optional<QRectF> BoxInThousandths(const QJsonObject& object) {
  const auto part = [&](const char* key) { return Number(object, key) / 1000.0; };
  return BoxOf(part("TopX"), part("TopY"), part("BottomX"), part("BottomY"));
}

void ReadZoom(const QJsonObject& item, Window& window) {
  window.digitalZoom =
      BoxOf(Decimal(item, "Xtop"), Decimal(item, "Ytop"), Decimal(item, "Xbottom"), Decimal(item, "Ybottom"));
  const QJsonObject mark = Object(item, "CenterMark");
  if (const auto box = BoxInThousandths(mark)) window.mark = CentreMark{*box, Number(mark, "StreamType")};

  const QJsonObject list = Object(item, "ZoomWindowList");
  window.zoomMode = Number(list, "ZoomMode");
  for (const auto& entry : List(list, "ZoomWindow")) {
    const QJsonObject zoom = entry.toObject();
    window.zoomWindows.push_back({Number(zoom, "No"), BoxInThousandths(zoom).value_or(QRectF())});
  }
  const QJsonObject related = Object(item, "RelatedZoomWindow");
  if (const int number = Number(related, "ZoomWindowNo", -1); number >= 0) {
    window.shows = ZoomLink{Text(related, "ViewItemWindowNo"), number, false};
  }
}

void ReadFishEye(const QJsonObject& item, Window& window) {
  const QJsonObject read = Object(item, "FishEye");
  if (!read["is_fisheye_open"].toBool()) return;
  FishEye& fishEye = window.fishEye.emplace();
  fishEye.mount = Number(read, "mount_type");
  fishEye.expansion = Number(read, "expand_mode");
  fishEye.window = Number(read, "window_no");
  for (const auto& entry : List(read, "FisheyeWndParam")) {
    const QJsonObject part = entry.toObject();
    fishEye.parts.push_back(
        {Number(part, "WndNo"), {Decimal(part, "PosX"), Decimal(part, "PosY")}, Decimal(part, "Zoom")});
  }
}

void ReadCycle(const QJsonObject& item, Window& window) {
  const QJsonObject read = Object(item, "CycleInfo");
  const QJsonArray resources = List(read, "CycleResourceID");
  if (resources.isEmpty()) return;
  Cycle& cycle = window.cycle.emplace();
  cycle.type = Number(read, "cycle_type");
  cycle.seconds = Number(read, "cycle_time");
  cycle.name = Text(read, "CycleName");
  for (const auto& entry : resources) {
    const QJsonObject resource = entry.toObject();
    cycle.resources.push_back({Id(resource, "ResourceID"), Text(resource, "ResourceName").trimmed()});
  }
}

void ReadMap(const QJsonObject& item, Window& window) {
  const QJsonObject read = Object(item, "Emap");
  window.map = Map{Text(read, "PosX"), Text(read, "PosY"), Number(read, "ScaleSize"), Number(read, "LoadMode"),
                   Text(read, "ExtendInfo")};
}

void ReadRelated(const QJsonObject& item, Window& window) {
  const int type = Number(item, "RelateResourceType", -1);
  const int id = Number(item, "RelateResourceID", -1);
  if (id == -1) return;
  window.related = Related{KindOfRelated(type), WordOfRelated(type), QString::number(static_cast<quint32>(id)),
                           Text(item, "RelateResourceName")};
}

Window ReadWindow(const QJsonObject& item) {
  Window window;
  window.number = Number(item, "Sequence");
  window.type = Number(item, "ResourceType");
  window.kind = KindOf(window.type);
  window.id = Id(item, "ResourceID");
  window.site = Id(item, "SiteID");
  window.name = Text(item, "ResourceName").trimmed();
  window.text = Text(item, "ExtendResource");
  window.stream = Number(item, "StreamType");
  window.preset = Number(item, "PresetId");
  window.presetName = Text(item, "PresetName");
  window.cruise = Number(item, "CruiseIndex");
  window.track = Number(item, "TrackIndex");
  ReadZoom(item, window);
  ReadFishEye(item, window);
  ReadCycle(item, window);
  if (window.kind == WindowKind::kMap) ReadMap(item, window);
  ReadRelated(item, window);
  return window;
}

const ZoomWindow* FindZoomWindow(const Window& window, int number) {
  const auto& all = window.zoomWindows;
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const ZoomWindow& zoom) { return zoom.number == number; });
  return found == all.end() || found->box.isEmpty() ? nullptr : &*found;
}

}  // namespace

const ZoomWindow* FindShown(const Page& page, const Window& window, const Window*& source) {
  if (!window.shows) return nullptr;
  for (const Window& other : page.windows) {
    if (QString::number(other.number) != window.shows->window) continue;
    source = &other;
    return FindZoomWindow(other, window.shows->zoomWindow);
  }
  return nullptr;
}

int PageCount(const QJsonObject& plan) {
  return List(plan, "PlanPages").size();
}

Page ReadPage(const QJsonObject& plan, int number) {
  Page page;
  page.view = Text(plan, "Name");
  page.viewId = Text(plan, "ID");
  page.number = number;
  page.count = PageCount(plan);
  if (Number(plan, "AutoCycle") > 0) page.turnedAfter = Number(plan, "RoundTime");
  if (plan["is_share_view"].toBool()) page.sharedBy = Text(plan, "share_user_name");
  const QJsonObject read = List(plan, "PlanPages").at(number - 1).toObject();
  page.division = Number(read, "windowDivision");
  page.customDivision = Text(read, "customWindowDivision");
  for (const auto& item : List(read, "PlanItems")) page.windows.push_back(ReadWindow(item.toObject()));
  const Window* source = nullptr;
  for (Window& window : page.windows) {
    if (window.shows) window.shows->isOnPage = FindShown(page, window, source) != nullptr;
  }
  return page;
}

}  // namespace drawing
