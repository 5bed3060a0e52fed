// SPDX-License-Identifier: Apache-2.0
// Other readers of the same list: each window's numbers and texts into a plain record. They do less than the library,
// which reads what is nested in windows as well, fills its tables, and takes odd forms.
#include "Peers.h"

#include <rapidjson/document.h>
#include <simdjson.h>

#include <array>
#include <vector>

#include "Report.h"

namespace bench {

namespace {

struct Member {
  const char* name;
  bool isText;
};
// In the order in which they stand, which is simdjson's fastest.
constexpr Member kMembers[] = {{"SequenceIndex", true},
                               {"ResourceType", false},
                               {"SiteID", false},
                               {"ResourceID", false},
                               {"RelateResourceID", false},
                               {"RelateResourceName", true},
                               {"RelateResourceType", false},
                               {"ExtendResource", true},
                               {"WindowNo", false},
                               {"Xtop", true},
                               {"Ytop", true},
                               {"Xbottom", true},
                               {"Ybottom", true},
                               {"PresetPointIndex", false},
                               {"CruiseIndex", false},
                               {"TrackIndex", false},
                               {"StreamType", false}};

struct PlainWindow {
  std::array<int64_t, 10> numbers;
  std::array<std::string, 7> texts;
  bool operator==(const PlainWindow&) const = default;
};
using PlainWindows = std::vector<PlainWindow>;

PlainWindows ReadByDom(const std::string& text) {
  PlainWindows windows;
  rapidjson::Document document;
  document.Parse(text.c_str());
  for (const auto& view : document["ResponseStatus"]["Data"]["ViewList"]["View"].GetArray()) {
    for (const auto& page : view["PlanPages"].GetArray()) {
      for (const auto& item : page["PlanViewItem"].GetArray()) {
        PlainWindow& window = windows.emplace_back();
        size_t numbers = 0, texts = 0;
        for (const auto& [name, isText] : kMembers) {
          const rapidjson::Value& value = item[name];
          if (isText) {
            window.texts[texts++].assign(value.GetString(), value.GetStringLength());
          } else {
            window.numbers[numbers++] = value.GetInt64();
          }
        }
      }
    }
  }
  return windows;
}

// On demand, its parser's memory used again. It passes over what is nested without checking it.
PlainWindows ReadBySimdjson(simdjson::ondemand::parser& parser, const simdjson::padded_string& text) {
  PlainWindows windows;
  simdjson::ondemand::document document = parser.iterate(text);
  for (simdjson::ondemand::object view : document["ResponseStatus"]["Data"]["ViewList"]["View"]) {
    for (simdjson::ondemand::object page : view["PlanPages"]) {
      for (simdjson::ondemand::object item : page["PlanViewItem"]) {
        PlainWindow& window = windows.emplace_back();
        size_t numbers = 0, texts = 0;
        for (const auto& [name, isText] : kMembers) {
          if (isText) {
            window.texts[texts++] = std::string_view(item.find_field(name).get_string());
          } else {
            window.numbers[numbers++] = item.find_field(name).get_int64();
          }
        }
      }
    }
  }
  return windows;
}

}  // namespace

void CompareReaders(const SiteSize& size, const std::string& text, const std::function<Side()>& parsing) {
  simdjson::ondemand::parser parser;
  const simdjson::padded_string padded(text);
  const PlainWindows windows = ReadByDom(text);
  Check(windows.size() == size.Windows(), "the DOM has other windows");
  Check(ReadBySimdjson(parser, padded) == windows, "simdjson reads other windows");
  const std::string site = std::string(", ") + size.name;
  AddRatio({"parse and each window's numbers and texts out of the DOM" + site, "bare DOM parse"}, {}, {[&] {
             const PlainWindows read = ReadByDom(text);
             Use(read.data());
           }},
           parsing());
  AddRatio({"the same by simdjson, on demand" + site, "bare DOM parse"}, {}, {[&] {
             const PlainWindows read = ReadBySimdjson(parser, padded);
             Use(read.data());
           }},
           parsing());
}

}  // namespace bench
