// SPDX-License-Identifier: Apache-2.0
#include "drawing/Icons.h"

#include <QLineF>
#include <QPainterPath>
#include <algorithm>

namespace drawing {
namespace {

// Icons are drawn on a sheet of 24 by 24.
using Sheet = QPainterPath;

void Line(Sheet& sheet, double x1, double y1, double x2, double y2) {
  sheet.moveTo(x1, y1);
  sheet.lineTo(x2, y2);
}

void Lines(Sheet& sheet, std::initializer_list<QPointF> points) {
  sheet.moveTo(*points.begin());
  for (const QPointF* point = points.begin() + 1; point != points.end(); ++point) sheet.lineTo(*point);
}

void Circle(Sheet& sheet, double x, double y, double radius) {
  sheet.addEllipse(QPointF(x, y), radius, radius);
}

void Arc(Sheet& sheet, double x, double y, double radius, double from, double sweep) {
  const QRectF box(x - radius, y - radius, 2 * radius, 2 * radius);
  sheet.arcMoveTo(box, from);
  sheet.arcTo(box, from, sweep);
}

// (x, y) is the tip, (dx, dy) the way it points.
void ArrowHead(Sheet& sheet, double x, double y, double dx, double dy) {
  Lines(sheet, {{x - dx - dy, y - dy + dx}, {x, y}, {x - dx + dy, y - dy - dx}});
}

// A surveillance camera on its arm, looking to the right.
Sheet Camera() {
  Sheet sheet;
  sheet.addRoundedRect(QRectF(3, 6, 13, 8), 1.5, 1.5);
  Lines(sheet, {{16, 8.5}, {21, 6.5}, {21, 13.5}, {16, 11.5}});
  Circle(sheet, 7, 10, 1.6);
  Lines(sheet, {{9.5, 14}, {9.5, 18}, {3, 18}});
  Line(sheet, 3, 15.5, 3, 20.5);
  return sheet;
}

Sheet Door() {
  Sheet sheet;
  sheet.addRect(QRectF(5, 2.5, 14, 19));
  Lines(sheet, {{5, 2.5}, {14, 5.5}, {14, 21.5}});
  Circle(sheet, 11.7, 13, 0.9);
  Line(sheet, 2, 21.5, 22, 21.5);
  return sheet;
}

Sheet Elevator() {
  Sheet sheet;
  sheet.addRect(QRectF(4, 2.5, 16, 19));
  Line(sheet, 12, 9, 12, 21.5);
  Lines(sheet, {{7, 7}, {9, 4.5}, {11, 7}, {7, 7}});
  Lines(sheet, {{13, 4.5}, {15, 7}, {17, 4.5}, {13, 4.5}});
  Line(sheet, 4, 9, 20, 9);
  return sheet;
}

Sheet Radar() {
  Sheet sheet;
  Circle(sheet, 12, 12, 9.5);
  Circle(sheet, 12, 12, 5.5);
  Circle(sheet, 12, 12, 1.2);
  Line(sheet, 12, 12, 19, 5.5);
  Circle(sheet, 8, 8.2, 0.8);
  return sheet;
}

// A folded sheet with a pin in it.
Sheet MapSheet() {
  Sheet sheet;
  Lines(sheet, {{2, 6}, {8.5, 3.5}, {15.5, 6}, {22, 3.5}, {22, 18.5}, {15.5, 21}, {8.5, 18.5}, {2, 21}, {2, 6}});
  Line(sheet, 8.5, 3.5, 8.5, 18.5);
  Line(sheet, 15.5, 6, 15.5, 21);
  Circle(sheet, 12, 10, 2);
  Lines(sheet, {{10.2, 11}, {12, 15.5}, {13.8, 11}});
  return sheet;
}

Sheet Globe() {
  Sheet sheet;
  Circle(sheet, 12, 12, 9.5);
  sheet.addEllipse(QPointF(12, 12), 4.2, 9.5);
  Line(sheet, 2.5, 12, 21.5, 12);
  Line(sheet, 4, 7, 20, 7);
  Line(sheet, 4, 17, 20, 17);
  return sheet;
}

// A device with waves on both sides: whatever it is, it can speak up.
Sheet Element() {
  Sheet sheet;
  sheet.addRoundedRect(QRectF(8, 4, 8, 16), 1.5, 1.5);
  Circle(sheet, 12, 9, 1.8);
  Line(sheet, 10, 14, 14, 14);
  Line(sheet, 10, 16.5, 14, 16.5);
  Arc(sheet, 15, 12, 6.5, -40, 80);
  Arc(sheet, 9, 12, 6.5, 140, 80);
  return sheet;
}

Sheet TextPanel() {
  Sheet sheet;
  sheet.addRoundedRect(QRectF(2, 5, 20, 14), 1.5, 1.5);
  for (const double y : {9.0, 12.0}) Line(sheet, 5.5, y, 18.5, y);
  Line(sheet, 5.5, 15, 13, 15);
  return sheet;
}

Sheet Question() {
  Sheet sheet;
  sheet.addRoundedRect(QRectF(3, 3, 18, 18), 2, 2);
  Arc(sheet, 12, 9.5, 3, 180, -210);
  Lines(sheet, {{13.2, 12.2}, {12, 13.5}, {12, 15}});
  Circle(sheet, 12, 17.7, 0.5);
  return sheet;
}

Sheet Of(WindowKind kind) {
  switch (kind) {
    case WindowKind::kEmpty:
      return {};
    case WindowKind::kCamera:
      return Camera();
    case WindowKind::kDoor:
      return Door();
    case WindowKind::kElevator:
      return Elevator();
    case WindowKind::kRadar:
      return Radar();
    case WindowKind::kMap:
      return MapSheet();
    case WindowKind::kWebPage:
      return Globe();
    case WindowKind::kElement:
      return Element();
    case WindowKind::kText:
      return TextPanel();
    case WindowKind::kOther:
      break;
  }
  return Question();
}

Sheet Target() {
  Sheet sheet;
  Circle(sheet, 12, 12, 7);
  Circle(sheet, 12, 12, 1.5);
  for (const QPointF& out : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)}) {
    Line(sheet, 12 + 4.5 * out.x(), 12 + 4.5 * out.y(), 12 + 10.5 * out.x(), 12 + 10.5 * out.y());
  }
  return sheet;
}

Sheet Path() {
  Sheet sheet;
  sheet.moveTo(3, 18);
  sheet.cubicTo(9, 4, 14, 22, 20, 7);
  ArrowHead(sheet, 20.5, 6, 1.2, -2.6);
  return sheet;
}

Sheet Chain() {
  Sheet sheet;
  sheet.addRoundedRect(QRectF(2, 8, 11, 8), 4, 4);
  sheet.addRoundedRect(QRectF(11, 8, 11, 8), 4, 4);
  return sheet;
}

Sheet Magnifier() {
  Sheet sheet;
  Circle(sheet, 10, 10, 7);
  Line(sheet, 15.2, 15.2, 21.5, 21.5);
  Line(sheet, 7, 10, 13, 10);
  Line(sheet, 10, 7, 10, 13);
  return sheet;
}

Sheet CrossInBox() {
  Sheet sheet;
  sheet.addRect(QRectF(3, 5, 18, 14));
  Line(sheet, 12, 8.5, 12, 15.5);
  Line(sheet, 8.5, 12, 15.5, 12);
  return sheet;
}

Sheet BoxInBox() {
  Sheet sheet;
  sheet.addRect(QRectF(2, 4, 20, 16));
  sheet.addRect(QRectF(11, 7, 8, 7));
  return sheet;
}

Sheet Lens() {
  Sheet sheet;
  Circle(sheet, 12, 12, 9.5);
  Circle(sheet, 12, 12, 3);
  for (int degrees = 0; degrees < 360; degrees += 60) {
    const QLineF spoke = QLineF::fromPolar(9.5, degrees).translated(12, 12);
    Line(sheet, spoke.pointAt(0.32).x(), spoke.pointAt(0.32).y(), spoke.x2(), spoke.y2());
  }
  return sheet;
}

Sheet Ring() {
  Sheet sheet;
  Arc(sheet, 12, 12, 8.5, 160, -140);
  ArrowHead(sheet, 20.3, 9.6, 0.7, 2.4);
  Arc(sheet, 12, 12, 8.5, -20, -140);
  ArrowHead(sheet, 3.7, 14.4, -0.7, -2.4);
  return sheet;
}

Sheet Of(Mark mark) {
  switch (mark) {
    case Mark::kNone:
      return {};
    case Mark::kPreset:
      return Target();
    case Mark::kMove:
      return Path();
    case Mark::kRelated:
      return Chain();
    case Mark::kDigitalZoom:
      return Magnifier();
    case Mark::kCentreMark:
      return CrossInBox();
    case Mark::kZoomWindow:
      return BoxInBox();
    case Mark::kFishEye:
      return Lens();
    case Mark::kCycle:
      return Ring();
    case Mark::kMap:
      break;
  }
  return MapSheet();
}

void Draw(QPainter& painter, const Sheet& sheet, const QRectF& place, const QColor& colour) {
  if (sheet.isEmpty()) return;
  const double size = std::min(place.width(), place.height());
  const QPointF corner = place.center() - QPointF(size / 2, size / 2);
  const QTransform scale = QTransform::fromTranslate(corner.x(), corner.y()).scale(size / 24, size / 24);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(colour, std::clamp(size / 16, 1.0, 5.0), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(scale.map(sheet));
}

}  // namespace

void DrawIcon(QPainter& painter, WindowKind kind, const QRectF& place, const QColor& colour) {
  Draw(painter, Of(kind), place, colour);
}

void DrawMark(QPainter& painter, Mark mark, const QRectF& place, const QColor& colour) {
  Draw(painter, Of(mark), place, colour);
}

}  // namespace drawing
