// SPDX-License-Identifier: Apache-2.0
#include "drawing/Scene.h"

#include <algorithm>

#include "drawing/Icons.h"
#include "drawing/Lettering.h"

namespace drawing {
namespace {

constexpr double kPictureRatio = 16.0 / 9;

bool HasBoxes(const Window& window) {
  return window.digitalZoom || window.mark || !window.zoomWindows.empty();
}

QColor Tint(QColor colour) {
  colour.setAlphaF(0.22);
  return colour;
}

double LetterSize(const QRectF& picture) {
  return std::clamp(picture.height() / 10, 9.0, 16.0);
}

QRectF Middle(const QRectF& place, double share) {
  const double size = std::min(place.width(), place.height()) * share;
  return QRectF(place.center() - QPointF(size / 2, size / 2), QSizeF(size, size));
}

void DrawGround(QPainter& painter, const Theme& theme, const QRectF& picture, const QColor& edge) {
  painter.setPen(QPen(edge, 1.2));
  painter.setBrush(theme.scene);
  painter.drawRect(picture);
}

void DrawFrame(QPainter& painter, const QRectF& box, const QColor& colour, Qt::PenStyle style) {
  painter.setPen(QPen(colour, 2, style));
  painter.setBrush(Tint(colour));
  painter.drawRect(box);
}

// A caption inside the box at its upper left, on a ground of its own; none where the box has no room for it.
void Caption(QPainter& painter, const Theme& theme, const QRectF& box, const QColor& colour, const QString& text,
             double size) {
  const QFont font = Lettering(size, true);
  const QRectF label(box.topLeft() + QPointF(1, 1), QSizeF(WidthOf(font, text) + size * 0.6, size * 1.4));
  if (label.width() > box.width() || label.height() > box.height()) return;
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  painter.drawRect(label);
  painter.setPen(theme.cell);
  DrawCentred(painter, font, label, text);
}

void DrawMarkBox(QPainter& painter, const Theme& theme, const QRectF& box, double size) {
  DrawFrame(painter, box, theme.centreMark, Qt::DotLine);
  const QPointF centre = box.center();
  const double arm = std::min({box.width() / 2, box.height() / 2, 14.0});
  painter.setPen(QPen(theme.centreMark, 2));
  painter.drawLine(centre - QPointF(arm, 0), centre + QPointF(arm, 0));
  painter.drawLine(centre - QPointF(0, arm), centre + QPointF(0, arm));
  Caption(painter, theme, box, theme.centreMark, "centre mark", size);
}

void DrawBoxes(QPainter& painter, const Theme& theme, const Window& window, const QRectF& picture) {
  DrawGround(painter, theme, picture, theme.sceneEdge);
  const double side = picture.height() * 0.22;
  DrawIcon(painter, window.kind, QRectF(picture.bottomLeft() + QPointF(side * 0.2, -side * 1.1), QSizeF(side, side)),
           theme.edge);
  const double size = LetterSize(picture);
  if (window.digitalZoom) {
    const QRectF box = InPicture(picture, *window.digitalZoom);
    DrawFrame(painter, box, theme.digitalZoom, Qt::DashLine);
    Caption(painter, theme, box, theme.digitalZoom, "digital zoom", size);
  }
  for (const ZoomWindow& zoom : window.zoomWindows) {
    if (zoom.box.isEmpty()) continue;
    const QRectF box = InPicture(picture, zoom.box);
    const QColor colour = theme.OfZoomWindow(zoom.number);
    DrawFrame(painter, box, colour, Qt::SolidLine);
    Caption(painter, theme, box, colour, QString::number(zoom.number), size);
  }
  if (window.mark) DrawMarkBox(painter, theme, InPicture(picture, window.mark->box), size);
}

// The picture is a zoom window's: framed in its colour, as the box in the other window is.
void DrawShown(QPainter& painter, const Theme& theme, const ZoomLink& shows, const QRectF& picture) {
  const QColor colour = theme.OfZoomWindow(shows.zoomWindow);
  DrawGround(painter, theme, picture, colour);
  DrawFrame(painter, picture, colour, Qt::SolidLine);
  DrawMark(painter, Mark::kDigitalZoom, Middle(picture, 0.5), colour);
  Caption(painter, theme, picture, colour, QString::number(shows.zoomWindow), LetterSize(picture));
}

void DrawPart(QPainter& painter, const Theme& theme, const FishEye::Part& part, const QRectF& picture, double size) {
  const QPointF inside(std::clamp(part.centre.x(), 0.0, 1.0), std::clamp(part.centre.y(), 0.0, 1.0));
  const double width = picture.width() * 0.34 / std::clamp(part.zoom, 1.0, 4.0);
  const QPointF centre = picture.topLeft() + QPointF(inside.x() * picture.width(), inside.y() * picture.height());
  const QRectF box = QRectF(centre - QPointF(width / 2, width / 2), QSizeF(width, width)).intersected(picture);
  DrawFrame(painter, box, theme.fishEye, Qt::SolidLine);
  painter.setPen(theme.text);
  DrawCentred(painter, Lettering(size, true), QRectF(centre - QPointF(20, 10), QSizeF(40, 20)),
              QString::number(part.number));
}

// The round picture, and where in it each expanded window looks.
void DrawFishEye(QPainter& painter, const Theme& theme, const FishEye& fishEye, const QRectF& picture) {
  painter.setPen(QPen(theme.fishEye, 2));
  painter.setBrush(theme.scene);
  painter.drawEllipse(picture);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(theme.edge, 1));
  const double radius = picture.width() / 2;
  for (const double share : {0.3, 0.62, 0.87}) painter.drawEllipse(picture.center(), radius * share, radius * share);
  for (int degrees = 0; degrees < 360; degrees += 30) {
    const QLineF spoke = QLineF::fromPolar(radius, degrees).translated(picture.center());
    painter.drawLine(spoke.pointAt(0.3), spoke.p2());
  }
  for (const FishEye::Part& part : fishEye.parts) DrawPart(painter, theme, part, picture, LetterSize(picture));
}

void DrawCycle(QPainter& painter, const Theme& theme, const Window& window, const QRectF& picture) {
  DrawGround(painter, theme, picture, theme.edge);
  const double size = LetterSize(picture);
  const QRectF ring = Middle(picture.adjusted(0, size * 0.4, 0, -size * 1.8), 0.95);
  DrawMark(painter, Mark::kCycle, ring, theme.cycle);
  DrawIcon(painter, window.kind, Middle(ring, 0.42), theme.Of(window.kind));
  painter.setPen(theme.cycle);
  const QString what =
      QString::number(window.cycle->resources.size()) + " × " + QString::number(window.cycle->seconds) + " s";
  DrawCentred(painter, Lettering(size, true),
              QRectF(picture.left(), picture.bottom() - size * 1.8, picture.width(), size * 1.5), what);
}

// The bar that maps have for their scale, and the words above it on a ground of their own.
void DrawScale(QPainter& painter, const Theme& theme, int scale, const QRectF& picture) {
  const double size = LetterSize(picture);
  const double cap = 5;
  const QPointF left(picture.left() + picture.width() * 0.06, picture.bottom() - picture.height() * 0.07);
  const QPointF right = left + QPointF(picture.width() * 0.3, 0);
  painter.setPen(QPen(theme.map, 2.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawPolyline(QPolygonF({left - QPointF(0, cap), left, right, right - QPointF(0, cap)}));
  if (picture.height() < 6 * size) return;
  const QFont font = Lettering(size, true);
  const QString text = "scale " + QString::number(scale);
  const double high = size * 1.3;
  const QRectF above(left - QPointF(0, cap + 1.5 + high), QSizeF(WidthOf(font, text) + 2, high));
  painter.setPen(Qt::NoPen);
  painter.setBrush(theme.scene);
  painter.drawRect(above);
  painter.setPen(theme.text);
  DrawLine(painter, font, above, text);
}

void DrawMap(QPainter& painter, const Theme& theme, const Map& map, const QRectF& picture) {
  DrawGround(painter, theme, picture, theme.sceneEdge);
  const auto at = [&](double x, double y) {
    return picture.topLeft() + QPointF(picture.width() * x, picture.height() * y);
  };
  painter.setPen(QPen(theme.edge, 1.5));
  painter.drawLine(at(0, 0.3), at(1, 0.15));
  painter.drawLine(at(0.25, 0), at(0.4, 1));
  painter.drawLine(at(0, 0.85), at(1, 0.7));
  painter.drawLine(at(0.8, 0), at(0.7, 1));

  painter.setPen(QPen(theme.map, 2.5));
  const double arm = std::min(picture.width(), picture.height()) * 0.2;
  painter.drawLine(picture.center() - QPointF(arm, 0), picture.center() + QPointF(arm, 0));
  painter.drawLine(picture.center() - QPointF(0, arm), picture.center() + QPointF(0, arm));
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(picture.center(), arm * 0.55, arm * 0.55);
  DrawScale(painter, theme, map.scale, picture);
}

// What the window is related to, at the lower right of the picture.
void DrawRelated(QPainter& painter, const Theme& theme, const Related& related, const QRectF& picture) {
  const double side = std::clamp(picture.height() * 0.36, 14.0, 90.0);
  const QRectF box(picture.bottomRight() - QPointF(side, side), QSizeF(side, side));
  painter.setPen(QPen(theme.related, 2));
  painter.setBrush(theme.cell);
  painter.drawRect(box);
  DrawIcon(painter, related.kind, Middle(box, 0.75), theme.related);
  const QRectF chain(box.left() - side * 0.55, box.center().y() - side * 0.3, side * 0.6, side * 0.6);
  DrawMark(painter, Mark::kRelated, chain, theme.related);
}

void DrawPicture(QPainter& painter, const Theme& theme, const Window& window, const QRectF& picture) {
  if (window.shows) return DrawShown(painter, theme, *window.shows, picture);
  if (HasBoxes(window)) return DrawBoxes(painter, theme, window, picture);
  if (window.fishEye) return DrawFishEye(painter, theme, *window.fishEye, picture);
  if (window.cycle) return DrawCycle(painter, theme, window, picture);
  if (window.map) return DrawMap(painter, theme, *window.map, picture);
  DrawGround(painter, theme, picture, theme.edge);
  DrawIcon(painter, window.kind, Middle(picture, 0.6), theme.Of(window.kind));
}

}  // namespace

QRectF PictureIn(const Window& window, const QRectF& place) {
  const bool isRound = window.fishEye && !window.shows && !HasBoxes(window);
  const QSizeF shape(isRound ? 1 : kPictureRatio, 1);
  return QRectF(place.topLeft(), shape.scaled(place.size(), Qt::KeepAspectRatio));
}

QRectF InPicture(const QRectF& picture, const QRectF& box) {
  return QRectF(picture.left() + box.left() * picture.width(), picture.top() + box.top() * picture.height(),
                box.width() * picture.width(), box.height() * picture.height());
}

void DrawScene(QPainter& painter, const Theme& theme, const Window& window, const QRectF& picture) {
  DrawPicture(painter, theme, window, picture);
  if (window.related) DrawRelated(painter, theme, *window.related, picture);
}

}  // namespace drawing
