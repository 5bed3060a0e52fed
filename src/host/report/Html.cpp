// SPDX-License-Identifier: Apache-2.0
#include "host/report/Html.h"

#include <QRegularExpression>
#include <QStringList>
#include <QVector>
#include <algorithm>

#include "drawing/SafeText.h"

namespace host {
namespace {

QString Read(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

bool TurnsLeft(uint letter) {
  const QChar::Direction direction = QChar::direction(letter);
  return direction == QChar::DirR || direction == QChar::DirAL || direction == QChar::DirAN;
}

// What has nothing to turn needs no element of its own, and large sites say a lot in words.
QString Isolated(const QString& part) {
  const auto letters = part.toUcs4();
  const bool turns = std::any_of(letters.begin(), letters.end(), TurnsLeft);
  return turns ? "<bdi>" + part.toHtmlEscaped() + "</bdi>" : part.toHtmlEscaped();
}

}  // namespace

std::string Html(std::string_view text) {
  return drawing::SafeText(Read(text)).toHtmlEscaped().toStdString();
}

std::string HtmlLine(std::string_view text) {
  return Read(text).toHtmlEscaped().toStdString();
}

std::string HtmlWords(std::string_view text) {
  static const QRegularExpression number("^[0-9-]+\\. ");
  QStringList lines = Read(text).split('\n');
  for (QString& line : lines) {
    const QString begin = number.match(line).captured();
    QStringList parts = line.mid(begin.size()).split("; ");
    for (QString& part : parts) part = Isolated(part);
    line = begin + parts.join("; ");
  }
  return lines.join('\n').toStdString();
}

std::string HtmlName(std::string_view name) {
  const bool isBlank = Read(name).trimmed().isEmpty();
  return isBlank ? "<span class=\"none\">(no name)</span>" : Tagged("bdi", Html(name));
}

std::string Tagged(const std::string& tag, const std::string& content) {
  return "<" + tag + ">" + content + "</" + tag.substr(0, tag.find(' ')) + ">";
}

}  // namespace host
