// SPDX-License-Identifier: Apache-2.0
// One page of a view as it is drawn, read from the answer of GetPlanDetail and from nothing else.
#pragma once

#include <QJsonObject>
#include <QRectF>
#include <QString>
#include <optional>
#include <vector>

#include "drawing/Kinds.h"

namespace drawing {

struct FishEye {
  struct Part {
    int number = 0;
    QPointF centre;  // fractions of the picture
    double zoom = 1;
  };
  int mount = 0;
  int expansion = 0;
  int window = 0;
  std::vector<Part> parts;
};

struct ZoomWindow {
  int number = 0;
  QRectF box;
};

// A window that shows a zoom window of this or another one.
struct ZoomLink {
  QString window;  // the other's number as text
  int zoomWindow = 0;
  bool isOnPage = false;  // whether the page has such a zoom window
};

struct CentreMark {
  QRectF box;
  int stream = 0;
};

struct Related {
  WindowKind kind = WindowKind::kOther;
  QString word;
  QString id;
  QString name;
};

struct Cycle {
  struct Resource {
    QString id;
    QString name;  // empty where it is not known
  };
  int type = 0;  // 0 cameras, 1 areas
  int seconds = 0;
  QString name;
  std::vector<Resource> resources;
};

struct Map {
  QString x, y;  // in the map's own units
  int scale = 0;
  int loadMode = 0;
  QString info;
};

// What one window shows. Boxes are fractions of the picture, (0, 0) its upper left corner; texts are safe to show; ids
// are unsigned, and empty where there is none.
struct Window {
  int number = 0;
  WindowKind kind = WindowKind::kEmpty;
  int type = 0;  // the number that the kind was read from
  QString id, site, name, text;
  int stream = 0;
  int preset = 0;  // 0 or less: none
  QString presetName;
  int cruise = 0;
  int track = 0;
  std::optional<QRectF> digitalZoom;
  std::optional<CentreMark> mark;
  int zoomMode = 0;
  std::vector<ZoomWindow> zoomWindows;
  std::optional<ZoomLink> shows;
  std::optional<FishEye> fishEye;
  std::optional<Related> related;
  std::optional<Cycle> cycle;
  std::optional<Map> map;
};

struct Page {
  QString view;
  QString viewId;
  int number = 1;  // from 1
  int count = 1;
  int turnedAfter = 0;  // seconds; 0: the pages are not turned
  int division = 0;
  QString customDivision;
  QString sharedBy;  // empty: the view is not somebody else's
  std::vector<Window> windows;
};

// The zoom window that a window of the page shows; null where it shows none or the page has no such one. `source` is
// then the window that it belongs to.
const ZoomWindow* FindShown(const Page& page, const Window& window, const Window*& source);

// How many pages the view has; a view without any is drawn as one empty page.
int PageCount(const QJsonObject& plan);

// REQUIRES: 1 <= number <= the larger of 1 and PageCount(plan). What is missing or of another kind reads as its
// default; corners outside the picture are moved to its edge. Any thread.
Page ReadPage(const QJsonObject& plan, int number);

}  // namespace drawing
