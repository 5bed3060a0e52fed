// SPDX-License-Identifier: Apache-2.0
#include "drawing/Lettering.h"

#include <QFontMetricsF>
#include <cmath>

namespace drawing {
namespace {

// Where the line begins: its base is set so that capitals stand in the middle.
QPointF Start(const QFont& font, const QRectF& place, double left) {
  return {left, place.center().y() + QFontMetricsF(font).capHeight() / 2};
}

QString Cut(const QFont& font, const QString& text, double width) {
  return QFontMetricsF(font).elidedText(text, Qt::ElideRight, width);
}

}  // namespace

QFont Lettering(double size, bool isBold) {
  QFont font(kFirstFont);  // the name that an SVG says
  font.setFamilies({kFirstFont, "Droid Sans Fallback", "Symbola", "sans-serif"});
  font.setPixelSize(static_cast<int>(std::lround(size)));
  font.setBold(isBold);
  // What a machine sets up for its screen does not count here.
  font.setHintingPreference(QFont::PreferNoHinting);
  font.setStyleStrategy(static_cast<QFont::StyleStrategy>(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
  return font;
}

double DrawLine(QPainter& painter, const QFont& font, const QRectF& place, const QString& text) {
  const QString cut = Cut(font, text, place.width());
  const double width = WidthOf(font, cut);
  painter.setFont(font);
  painter.drawText(Start(font, place, text.isRightToLeft() ? place.right() - width : place.left()), cut);
  return width;
}

void DrawCentred(QPainter& painter, const QFont& font, const QRectF& place, const QString& text) {
  const QString cut = Cut(font, text, place.width());
  painter.setFont(font);
  painter.drawText(Start(font, place, place.center().x() - WidthOf(font, cut) / 2), cut);
}

double WidthOf(const QFont& font, const QString& text) {
  return QFontMetricsF(font).horizontalAdvance(text);
}

}  // namespace drawing
