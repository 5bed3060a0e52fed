// SPDX-License-Identifier: Apache-2.0
#include "host/edit/EditText.h"

#include <rapidjson/prettywriter.h>

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>
#include <utility>

#include "host/Failure.h"
#include "host/JsonText.h"
#include "host/PortableFile.h"
#include "host/calls/RequestCheck.h"

namespace host {
namespace {

constexpr const char* kKeys[] = {"Name", "AutoCycle", "RoundTime", "PlanPages"};
constexpr const char* kNote = "// ^ ";

std::string Pretty(const std::string& json) {
  rapidjson::Document document;
  ParseJson(json, document);
  rapidjson::StringBuffer buffer;
  rapidjson::PrettyWriter writer(buffer);
  writer.SetIndent(' ', 2);
  document.Accept(writer);
  return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

bool IsNote(const std::string& line) {
  const size_t first = line.find_first_not_of(" \t");
  return first != std::string::npos && line.compare(first, 2, "//") == 0;
}

// Notes in which line of a text each key stands, by its path: "PlanPages[1].PlanItems[2].ResourceID".
class LineFinder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, LineFinder> {
 public:
  explicit LineFinder(const std::string& text) : m_text(text), m_stream(text.c_str()) {
    // Numbers as texts: RapidJSON does not convert all that people may write.
    rapidjson::Reader().Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag>(m_stream, *this);
  }

  size_t LineOf(const std::string& path) const {
    const auto found = m_lines.find(path);
    return found == m_lines.end() ? 1 : found->second;
  }

  bool Default() {
    CountEntry();
    return true;
  }
  bool StartObject() { return Open(false); }
  bool StartArray() { return Open(true); }
  bool EndObject(rapidjson::SizeType) { return Close(); }
  bool EndArray(rapidjson::SizeType) { return Close(); }
  bool Key(const char* name, rapidjson::SizeType length, bool) {
    const std::string key(name, length);
    m_path = m_levels.back().path.empty() ? key : m_levels.back().path + "." + key;
    m_lines.emplace(m_path, Line());
    return true;
  }

 private:
  struct Level {
    std::string path;
    bool isList = false;
    size_t entries = 0;
  };

  bool Open(bool isList) {
    CountEntry();
    m_levels.push_back({m_path, isList, 0});
    return true;
  }
  bool Close() {
    m_levels.pop_back();
    return true;
  }
  void CountEntry() {
    if (m_levels.empty() || !m_levels.back().isList) return;
    m_path = m_levels.back().path + "[" + std::to_string(++m_levels.back().entries) + "]";
    m_lines.emplace(m_path, Line());
  }
  size_t Line() {
    const size_t end = m_stream.Tell();
    const auto counted = m_text.begin() + static_cast<std::ptrdiff_t>(std::exchange(m_counted, end));
    m_line += static_cast<size_t>(std::count(counted, m_text.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
    return m_line;
  }

  const std::string& m_text;
  rapidjson::StringStream m_stream;
  std::string m_path;
  std::vector<Level> m_levels;
  std::map<std::string, size_t> m_lines;
  size_t m_line = 1;     // in which what follows stands:
  size_t m_counted = 0;  // characters that were gone through
};

// What the check of requests says of a place in the text.
EditFault Located(const LineFinder& lines, const std::string& fault) {
  static const std::regex notJson("the request is no JSON at line ([0-9]+), (column [0-9]+)");
  static const std::regex placed("([A-Za-z_\\[\\]0-9.]+): (.*)");
  static const std::regex named("(?:there is no key )?\"([^\"]*)\".*");
  std::smatch parts;
  if (std::regex_match(fault, parts, notJson)) return {std::stoul(parts[1]), "this is no JSON, at " + parts[2].str()};
  std::string path;
  std::string text = fault;
  if (std::regex_match(fault, parts, placed)) {
    path = parts[1];
    text = parts[2];
  }
  if (std::regex_match(text, parts, named)) path += (path.empty() ? "" : ".") + parts[1].str();
  return {lines.LineOf(path), text};
}

// How often each number of a window stands on the page.
std::map<int, size_t> NumbersOn(const rapidjson::Value& page) {
  std::map<int, size_t> counts;
  for (const rapidjson::Value& window : ListOf(page, "PlanItems").GetArray()) ++counts[NumberOf(window, "Sequence")];
  return counts;
}

// The most that a number stands on one of the view's pages.
std::map<int, size_t> NumbersIn(const EditableView& view) {
  rapidjson::Document pages;
  ParseJson(view.pages, pages);
  std::map<int, size_t> most;
  if (!pages.IsArray()) return most;
  for (const rapidjson::Value& page : pages.GetArray()) {
    for (const auto& [number, count] : NumbersOn(page)) most[number] = std::max(most[number], count);
  }
  return most;
}

// Windows that get the number of another one: what finds a window by its number would take the first for it.
void AddDoubleNumbers(const rapidjson::Value& page, const std::string& where, std::map<int, size_t> allowed,
                      const LineFinder& lines, std::vector<EditFault>& faults) {
  std::map<int, size_t> seen;
  size_t entry = 0;
  for (const rapidjson::Value& window : ListOf(page, "PlanItems").GetArray()) {
    const std::string place = where + ".PlanItems[" + std::to_string(++entry) + "]";
    const int number = NumberOf(window, "Sequence");
    if (++seen[number] <= std::max<size_t>(1, allowed[number])) continue;
    const std::string key = place + ".Sequence";
    faults.push_back({lines.LineOf(window.HasMember("Sequence") ? key : place),
                      "there is a window " + std::to_string(number) + " on the page already; give another number"});
  }
}

void AddDoubleNumbers(const rapidjson::Document& document, const EditableView& before, const LineFinder& lines,
                      std::vector<EditFault>& faults) {
  const std::map<int, size_t> allowed = NumbersIn(before);
  size_t number = 0;
  for (const rapidjson::Value& page : ListOf(document, "PlanPages").GetArray()) {
    AddDoubleNumbers(page, "PlanPages[" + std::to_string(++number) + "]", allowed, lines, faults);
  }
}

// Keys that a request has and the text has not.
void AddForeignKeys(const rapidjson::Document& document, const LineFinder& lines, std::vector<EditFault>& faults) {
  for (const auto& member : document.GetObject()) {
    const std::string key(member.name.GetString(), member.name.GetStringLength());
    const bool isOfRequest = key == "ID" || key == "GroupID" || key == "Type" || key == "is_share_view";
    if (isOfRequest) faults.push_back({lines.LineOf(key), "\"" + key + "\" is not changed here; leave it out"});
  }
}

}  // namespace

std::string ToEditText(const EditableView& view) {
  ObjectText text;
  text.Add("Name", view.name).Add("AutoCycle", view.autoCycle).Add("RoundTime", view.roundTime);
  return Pretty(text.AddRaw("PlanPages", view.pages).Text());
}

std::string WithoutNotes(std::string_view text) {
  std::istringstream lines{std::string(text)};
  std::string kept;
  for (std::string line; std::getline(lines, line);) kept += IsNote(line) ? "" : line + "\n";
  return kept;
}

std::vector<EditFault> FaultsInEdit(const std::string& text, const EditableView& before) {
  rapidjson::Document document;
  const bool isJson = ParseJson(text, document);
  if (isJson && !document.IsObject()) return {{1, "the text is no object"}};
  const LineFinder lines(text);
  std::vector<EditFault> faults;
  for (const std::string& fault : FaultsOf("UpdatePlan", text)) faults.push_back(Located(lines, fault));
  if (!isJson) return faults;
  AddForeignKeys(document, lines, faults);
  if (faults.empty()) AddDoubleNumbers(document, before, lines, faults);
  for (const char* key : kKeys) {
    const bool isSaid = document.HasMember(key) || std::string_view(key) == "PlanPages";
    if (!isSaid) faults.push_back({1, "\"" + std::string(key) + "\" is missing"});
  }
  return faults;
}

std::string WithNotes(const std::string& text, const std::vector<EditFault>& faults) {
  std::istringstream lines{text};
  std::string noted;
  size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    noted += line + "\n";
    ++number;
    for (const EditFault& fault : faults) {
      if (fault.line == number) noted += kNote + fault.text + "\n";
    }
  }
  // A text that ends too early has its fault behind its last line.
  for (const EditFault& fault : faults) {
    if (fault.line > number) noted += kNote + fault.text + "\n";
  }
  return noted;
}

EditableView FromEditText(const std::string& text, const EditableView& before) {
  rapidjson::Document document;
  ParseJson(text, document);
  EditableView view = before;
  view.name = TextOf(document, "Name");
  view.autoCycle = NumberOf(document, "AutoCycle");
  view.roundTime = NumberOf(document, "RoundTime");
  view.pages = KeepPages(ListOf(document, "PlanPages"), "The text");
  return view;
}

}  // namespace host
