// SPDX-License-Identifier: Apache-2.0
#include "host/report/Html.h"

#include <QRegularExpression>
#include <QStringList>

#include "drawing/SafeText.h"

namespace host {
namespace {

QString Read(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
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
    for (QString& part : parts) part = "<bdi>" + part.toHtmlEscaped() + "</bdi>";
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
