// SPDX-License-Identifier: Apache-2.0
#include "host/report/StackedDrawings.h"

#include <algorithm>
#include <cstdlib>

#include "host/report/Html.h"

namespace host {
namespace {

int NumberAfter(const std::string& text, const std::string& key) {
  const size_t at = text.find(key);
  return at == std::string::npos ? 0 : std::atoi(text.c_str() + at + key.size());
}

std::string Attribute(const char* key, int value) {
  return " " + std::string(key) + "=\"" + std::to_string(value) + "\"";
}

}  // namespace

DrawingSize SizeOf(const std::string& drawing) {
  return {NumberAfter(drawing, " width=\""), NumberAfter(drawing, " height=\"")};
}

std::string StackDrawings(const ReportView& view, const std::string& rules) {
  std::string parts;
  DrawingSize whole;
  for (size_t page = 0; page < view.pages.size(); ++page) {
    const std::string& drawing = view.pages[page].drawing;
    const DrawingSize size = SizeOf(drawing);
    parts += "<view id=\"p" + std::to_string(page + 1) + "\" viewBox=\"0 " + std::to_string(whole.height) + " " +
             std::to_string(size.width) + " " + std::to_string(size.height) + "\"/>\n";
    parts += "<svg" + Attribute("y", whole.height) + drawing.substr(4) + "\n";
    whole = {std::max(whole.width, size.width), whole.height + size.height};
  }
  std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\"" + Attribute("width", whole.width) +
                     Attribute("height", whole.height) + " viewBox=\"0 0 " + std::to_string(whole.width) + " " +
                     std::to_string(whole.height) + "\">\n";
  text += Tagged("title", Html(view.name)) + "\n<desc>";
  for (const ReportPage& page : view.pages) text += HtmlLine(page.words) + "\n";
  return text + "</desc>\n" + Tagged("style", rules) + "\n" + parts + "</svg>\n";
}

}  // namespace host
