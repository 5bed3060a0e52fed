// SPDX-License-Identifier: Apache-2.0
#include "host/report/SharedPaths.h"

#include <string_view>

namespace host {
namespace {

constexpr std::string_view kBegin = "<path transform=\"translate(";
constexpr std::string_view kMiddle = ")\" d=\"";
constexpr std::string_view kEnd = "\"/>";
// A reference takes about as much.
constexpr size_t kShortest = 40;

std::string Name(size_t number) {
  return "d" + std::to_string(number);
}

}  // namespace

std::string SharedPaths::Refer(const std::string& drawing) {
  std::string text;
  size_t done = 0;
  for (size_t at = 0; (at = drawing.find(kBegin, at)) != std::string::npos;) {
    const size_t place = at + kBegin.size();
    const size_t middle = drawing.find(kMiddle, place);
    const size_t end = drawing.find(kEnd, place);
    if (middle == std::string::npos || end == std::string::npos || middle > end) break;
    const std::string path = drawing.substr(middle + kMiddle.size(), end - middle - kMiddle.size());
    if (path.size() >= kShortest) {
      const size_t number = m_numbers.emplace(path, m_numbers.size()).first->second;
      text += drawing.substr(done, at - done) + "<use href=\"#" + Name(number) + "\" transform=\"translate(" +
              drawing.substr(place, middle - place) + ")\"/>";
      done = end + kEnd.size();
    }
    at = end;
  }
  return text + drawing.substr(done);
}

std::string SharedPaths::Definitions() const {
  std::string text = "<svg class=\"drawing\" width=\"0\" height=\"0\" aria-hidden=\"true\"><defs>";
  for (const auto& [path, number] : m_numbers) text += "<path id=\"" + Name(number) + "\" d=\"" + path + "\"/>";
  return text + "</defs></svg>";
}

}  // namespace host
