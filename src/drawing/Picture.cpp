// SPDX-License-Identifier: Apache-2.0
#include "drawing/Picture.h"

#include <QBuffer>
#include <QImage>
#include <QRegularExpression>
#include <QSvgGenerator>

#include "drawing/Lettering.h"
#include "drawing/PagePainter.h"
#include "drawing/ShortSvg.h"
#include "drawing/Words.h"

namespace drawing {
namespace {

constexpr int kDotsPerInch = 96;

// What the generator does not say of texts. Where the first font is missing, one of its like is better than a viewer's
// standard one. A run that is read from right to left begins at its right end, blanks at its own end included; its
// place is that of its left one.
QString Completed(const QString& svg) {
  static const QRegularExpression text("<text ([^>]*)>([^<]*)</text>");
  QString completed;
  int done = 0;
  for (auto found = text.globalMatch(svg); found.hasNext();) {
    const QRegularExpressionMatch match = found.next();
    completed += svg.midRef(done, match.capturedStart() - done);
    if (match.captured(2).isRightToLeft()) {
      completed += "<text direction=\"rtl\" unicode-bidi=\"embed\" text-anchor=\"end\" ";
      completed += svg.midRef(match.capturedStart(1), match.capturedEnd() - match.capturedStart(1));
    } else {
      completed += match.capturedRef();
    }
    done = match.capturedEnd();
  }
  completed += svg.midRef(done);
  const QString first = kFirstFont;
  return completed.replace("font-family=\"" + first + "\"", "font-family=\"" + first + ", Verdana, sans-serif\"");
}

QString MakeSvg(const Page& page, const Theme& theme) {
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
  return Completed(QString::fromUtf8(svg));
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
  return format == Format::kSvg ? MakeSvg(page, theme).toUtf8() : MakePng(page, theme);
}

QByteArray MakeShortSvg(const Page& page) {
  return ShortSvg(MakeSvg(page, Theme::Numbered())).toUtf8();
}

}  // namespace drawing
