// SPDX-License-Identifier: Apache-2.0
#include "drawing/Picture.h"

#include <QBuffer>
#include <QImage>
#include <QSvgGenerator>

#include "drawing/Lettering.h"
#include "drawing/PagePainter.h"
#include "drawing/Words.h"

namespace drawing {
namespace {

constexpr int kDotsPerInch = 96;

QByteArray MakeSvg(const Page& page, const Theme& theme) {
  QByteArray svg;
  QBuffer buffer(&svg);
  buffer.open(QIODevice::WriteOnly);
  QSvgGenerator generator;
  generator.setOutputDevice(&buffer);
  generator.setResolution(kDotsPerInch);
  generator.setSize(SizeOf(page));
  generator.setViewBox(QRect(QPoint(0, 0), SizeOf(page)));
  generator.setTitle(page.view.toHtmlEscaped());
  generator.setDescription(InWords(page).toHtmlEscaped());
  QPainter painter(&generator);
  DrawPage(painter, page, theme);
  painter.end();
  // Where the first font is missing, one of its like is better than a viewer's standard one.
  const QByteArray first = kFirstFont;
  return svg.replace("font-family=\"" + first + "\"", "font-family=\"" + first + ", Verdana, sans-serif\"");
}

QByteArray MakePng(const Page& page, const Theme& theme) {
  QImage image(SizeOf(page), QImage::Format_RGB32);
  if (image.isNull()) return {};
  image.setDotsPerMeterX(qRound(kDotsPerInch / 0.0254));
  image.setDotsPerMeterY(qRound(kDotsPerInch / 0.0254));
  QPainter painter(&image);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
  DrawPage(painter, page, theme);
  painter.end();
  QByteArray png;
  QBuffer buffer(&png);
  buffer.open(QIODevice::WriteOnly);
  return image.save(&buffer, "PNG") ? png : QByteArray();
}

}  // namespace

QByteArray MakePicture(const Page& page, const Theme& theme, Format format) {
  return format == Format::kSvg ? MakeSvg(page, theme) : MakePng(page, theme);
}

}  // namespace drawing
