// SPDX-License-Identifier: Apache-2.0
#include "host/report/Html.h"

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

std::string HtmlLines(std::string_view text) {
  return Read(text).toHtmlEscaped().toStdString();
}

std::string HtmlName(std::string_view name) {
  const bool isBlank = Read(name).trimmed().isEmpty();
  return isBlank ? "<i>(no name)</i>" : Tagged("bdi", Html(name));
}

std::string Tagged(const std::string& tag, const std::string& content) {
  return "<" + tag + ">" + content + "</" + tag.substr(0, tag.find(' ')) + ">";
}

}  // namespace host
