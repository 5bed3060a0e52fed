// SPDX-License-Identifier: Apache-2.0
#include "host/report/DrawingFile.h"

#include <cstdlib>

#include "host/report/Html.h"

namespace host {
namespace {

int NumberAfter(const std::string& text, const std::string& key) {
  const size_t at = text.find(key);
  return at == std::string::npos ? 0 : std::atoi(text.c_str() + at + key.size());
}

}  // namespace

DrawingSize SizeOf(const std::string& drawing) {
  return {NumberAfter(drawing, " width=\""), NumberAfter(drawing, " height=\"")};
}

std::string DrawingFile(const ReportView& view, const ReportPage& page, const std::string& rules) {
  const std::string& drawing = page.drawing;
  const size_t content = drawing.find('>') + 1;
  return "<svg xmlns=\"http://www.w3.org/2000/svg\"" + drawing.substr(4, content - 4) + "\n" +
         Tagged("title", Html(view.name)) + "\n" + Tagged("desc", HtmlLine(page.words)) + "\n" +
         Tagged("style", rules) + "\n" + drawing.substr(content) + "\n";
}

}  // namespace host
