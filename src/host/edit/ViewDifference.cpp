// SPDX-License-Identifier: Apache-2.0
#include "host/edit/ViewDifference.h"

#include <algorithm>
#include <map>

#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/Resources.h"
#include "host/Terminal.h"

namespace host {
namespace {

using rapidjson::Value;
// The values of an object by their paths in it, as JSON.
using Values = std::map<std::string, std::string>;

std::string ToJson(const Value& value) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer writer(buffer);
  value.Accept(writer);
  return {buffer.GetString(), buffer.GetSize()};
}

// No deeper than KeepPages goes.
void Flatten(const Value& value, const std::string& path, Values& values) {
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      Flatten(member.value, (path.empty() ? "" : path + ".") + member.name.GetString(), values);
    }
  } else if (value.IsArray()) {
    size_t number = 0;
    for (const Value& entry : value.GetArray()) Flatten(entry, path + "[" + std::to_string(++number) + "]", values);
  } else {
    values[path] = ToJson(value);
  }
}

struct Page {
  Values own;
  // By number; the second of one number is told apart.
  std::map<std::pair<int, int>, Values> windows;
  std::string text;
};

Page ReadPage(const Value& page) {
  Page read;
  read.text = ToJson(page);
  Flatten(page, "", read.own);
  std::erase_if(read.own, [](const auto& value) { return value.first.starts_with("PlanItems"); });
  std::map<int, int> seen;
  for (const Value& window : ListOf(page, "PlanItems").GetArray()) {
    const int number = NumberOf(window, "Sequence");
    Flatten(window, "", read.windows[{number, seen[number]++}]);
  }
  return read;
}

std::vector<Page> ReadPages(const EditableView& view) {
  rapidjson::Document document;
  ParseJson(view.pages, document);
  std::vector<Page> pages;
  if (!document.IsArray()) return pages;
  for (const Value& page : document.GetArray()) pages.push_back(ReadPage(page));
  return pages;
}

std::string ShownBy(const Values& window) {
  const int type = std::stoi(window.at("ResourceType"));
  return type == 0 ? "empty" : KindWord(type) + " " + UnsignedId(window.at("ResourceID"));
}

class Comparison {
 public:
  void CompareValues(const std::string& where, const Values& before, const Values& after) {
    Values all = before;
    all.insert(after.begin(), after.end());
    for (const auto& [path, ignored] : all) Compare(where + path + " ", Of(before, path), Of(after, path));
  }

  void Compare(const std::string& what, const std::string& before, const std::string& after) {
    if (before != after) m_lines.push_back(Printable(what + before + " -> " + after));
  }

  void ComparePages(const std::vector<Page>& before, const std::vector<Page>& after) {
    for (size_t i = 0; i < std::max(before.size(), after.size()); ++i) {
      const std::string where = "page " + std::to_string(i + 1);
      if (i >= before.size()) {
        m_lines.push_back(where + ": new, with " + Counted(after[i].windows.size(), "window"));
      } else if (i >= after.size()) {
        m_lines.push_back(where + ": gone, with " + Counted(before[i].windows.size(), "window"));
      } else {
        ComparePage(where, before[i], after[i]);
      }
    }
  }

  std::vector<std::string> Take() { return std::move(m_lines); }

 private:
  static std::string Of(const Values& values, const std::string& path) {
    const auto found = values.find(path);
    return found == values.end() ? "nothing" : found->second;
  }

  void ComparePage(const std::string& where, const Page& before, const Page& after) {
    const size_t told = m_lines.size();
    CompareValues(where + ": ", before.own, after.own);
    auto all = before.windows;
    all.insert(after.windows.begin(), after.windows.end());
    for (const auto& [number, ignored] : all) {
      const auto old = before.windows.find(number);
      const auto now = after.windows.find(number);
      const std::string place = where + ", window " + std::to_string(number.first) + ": ";
      if (old == before.windows.end()) {
        m_lines.push_back(Printable(place + "new, " + ShownBy(now->second)));
      } else if (now == after.windows.end()) {
        m_lines.push_back(Printable(place + "gone, " + ShownBy(old->second)));
      } else {
        CompareValues(place, old->second, now->second);
      }
    }
    if (m_lines.size() == told && before.text != after.text) m_lines.push_back(where + ": the order of its windows");
  }

  std::vector<std::string> m_lines;
};

}  // namespace

std::vector<std::string> Differences(const EditableView& before, const EditableView& after) {
  Comparison comparison;
  comparison.Compare("name: ", "\"" + before.name + "\"", "\"" + after.name + "\"");
  comparison.Compare("folder: ", before.groupId, after.groupId);
  comparison.Compare("AutoCycle: ", std::to_string(before.autoCycle), std::to_string(after.autoCycle));
  comparison.Compare("RoundTime: ", std::to_string(before.roundTime), std::to_string(after.roundTime));
  comparison.ComparePages(ReadPages(before), ReadPages(after));
  return comparison.Take();
}

}  // namespace host
