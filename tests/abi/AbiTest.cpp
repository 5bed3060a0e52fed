// SPDX-License-Identifier: Apache-2.0
// The exported symbols of the libraries, and the layout of what hosts share with them, against the committed list of
// the version's first number.
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "ResourceStore/DownloadResource.h"
#include "ResourceStore/Element.h"
#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/ViewGroupManager.h"
#include "VantBase/Log.h"
#include "system/Program.h"

namespace {

using Lines = std::set<std::string>;

// Not of the details, which the platform's libraries share among themselves, but for the log that the plugin calls.
bool IsPromised(const std::string& name) {
  static const std::regex kOurs(
      "^((vtable|typeinfo|typeinfo name) for )?(Vant|NetLink|BizShared|ResourceStore|ErrorText|VeltControl|"
      "QorviViewPlugin)::.*|^[A-Z][A-Za-z]+$");
  if (name.find("::IOrlFormatLog(") != std::string::npos) return true;
  return std::regex_match(name, kOurs) && name.find("::details::") == std::string::npos &&
         name.find("UpdateCallbackSlot") == std::string::npos && name.find("[clone") == std::string::npos;
}

// "library symbol", and for tables of virtual functions their size; behind "weak " where how it was compiled decides
// too whether the library has it.
void AddSymbols(const std::string& file, Lines& lines) {
  static const std::regex kSymbol("^[0-9a-f]+ ([0-9a-f]+ )?([A-Za-z]) (.+)$");
  const size_t from = file.rfind('/') + 4;  // after "lib"
  const std::string library = file.substr(from, file.find('.', from) - from);
  std::istringstream symbols(test_programs::Program({NM_PROGRAM, "-D", "-C", "-S", "--defined-only", file}).All());
  std::smatch part;
  for (std::string symbol; std::getline(symbols, symbol);) {
    if (!std::regex_match(symbol, part, kSymbol) || !IsPromised(part[3])) continue;
    const bool isTable = part[3].str().rfind("vtable for ", 0) == 0;
    const bool isWeak = part[2] == "W" || part[2] == "V";
    lines.insert((isWeak ? "weak " : "") + library + ' ' + part[3].str() +
                 (isTable ? ", " + std::to_string(std::stoul(part[1], nullptr, 16)) : ""));
  }
}

std::string Layout(const std::string& name, size_t size, size_t alignment) {
  return "layout " + name + ": " + std::to_string(size) + " bytes, aligned to " + std::to_string(alignment);
}
#define LAYOUT(Type) lines.insert(Layout(#Type, sizeof(Type), alignof(Type)))
#define FIELD(Type, field) lines.insert("layout " #Type "::" #field " at " + std::to_string(offsetof(Type, field)))

template <class Record>
void AddRecord(const std::string& name, Lines& lines) {
  lines.insert(Layout(name, sizeof(Record), alignof(Record)));
  const Record record{};
  QorviViewPlugin::ForEachField<Record>([&](const auto& field) {
    const auto at = reinterpret_cast<const char*>(&(record.*field.member)) - reinterpret_cast<const char*>(&record);
    lines.insert("layout " + name + "::" + field.key + " at " + std::to_string(at));
  });
}

void AddLayouts(Lines& lines) {
  using namespace QorviViewPlugin;
#define RECORD(Name) AddRecord<Name>(#Name, lines), LAYOUT(C##Name)
  RECORD(Rectangle), RECORD(CalibrationInfo), RECORD(FisheyeExpandWndParam), RECORD(FishEyeInfo);
  RECORD(LocalWindowInfo), RECORD(SingleWndCycle), RECORD(CameraGridStruct);
#undef RECORD
  LAYOUT(CViewExport), LAYOUT(CViewGroupExport), LAYOUT(CViewResourceUpdateManager);
  LAYOUT(Vant::Base::Error::ErrorCode), LAYOUT(Vant::Base::ILogSink), LAYOUT(NetLink::CClientSendInfo);
  LAYOUT(NetLink::CClientRecvInfo), LAYOUT(NetLink::CRapidJsonProto), LAYOUT(BizShared::CNetCommManager);
  LAYOUT(BizShared::CUserCommonManager), LAYOUT(ResourceStore::CViewGroupManager), LAYOUT(ResourceStore::CElement);
  LAYOUT(ResourceStore::CDownloadLogicalResource), LAYOUT(ResourceStore::CUserInfo);
  using Param = ResourceData::IResourceObserver::Param;
  LAYOUT(Param), FIELD(Param, id), FIELD(Param, enum_state), FIELD(Param, name), FIELD(Param, reserved);
  FIELD(Param, child_id), FIELD(Param, child_type), FIELD(Param, other_change_info);
  using ResourceStore::DownloadStatus;
  LAYOUT(DownloadStatus), FIELD(DownloadStatus, state), FIELD(DownloadStatus, since), FIELD(DownloadStatus, error);
  FIELD(DownloadStatus, systemError);
}

Lines Present() {
  Lines lines;
  std::istringstream files(LIBRARIES);
  for (std::string file; std::getline(files, file, ':');) AddSymbols(file, lines);
  AddLayouts(lines);
  // As the list has it, whatever the compiler's library calls it.
  Lines readable;
  const std::regex kLong("std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >"),
      kAbi("\\[abi:cxx11\\]");
  for (const std::string& line : lines) {
    readable.insert(std::regex_replace(std::regex_replace(line, kLong, "std::string"), kAbi, ""));
  }
  return readable;
}

struct Reference {
  Lines lines;
  std::vector<std::pair<int, int>> versions;  // of its sections
};

Reference ReadReference() {
  Reference reference;
  std::ifstream file(REFERENCE);
  std::smatch version;
  for (std::string line; std::getline(file, line);) {
    if (std::regex_match(line, version, std::regex("# since ([0-9]+)\\.([0-9]+)"))) {
      reference.versions.emplace_back(std::stoi(version[1]), std::stoi(version[2]));
    } else if (!line.empty() && line[0] != '#') {
      reference.lines.insert(line);
    }
  }
  return reference;
}

std::string Missing(const Lines& wanted, const Lines& there) {
  std::string text;
  for (const std::string& line : wanted) text += there.count(line) == 0 ? line + "\n" : "";
  return text;
}

Lines NotWeak(Lines lines) {
  std::erase_if(lines, [](const std::string& line) { return line.starts_with("weak "); });
  return lines;
}

TEST(Abi, IsTheOneOfItsVersion) {
  const Lines present = Present();
  const Reference reference = ReadReference();
  std::ofstream file(PRESENT);  // for who has to write a list
  for (const std::string& line : present) file << line << '\n';
  EXPECT_GT(present.size(), 300u);
  EXPECT_EQ(Missing(reference.lines, present), "")
      << "Programs that are built already need these. Without them it is another first number of the version.";
  EXPECT_EQ(Missing(NotWeak(present), reference.lines), "")
      << "These are new: they stand in the list under the version that brings them, with another second number.";
  ASSERT_FALSE(reference.versions.empty()) << "There is no list for this first number: " REFERENCE;
  const std::pair<int, int> version(VERSION_MAJOR, VERSION_MINOR);
  for (const auto& since : reference.versions) EXPECT_LE(since, version) << since.first << '.' << since.second;
  std::ifstream changelog(CHANGELOG);
  const std::string text(std::istreambuf_iterator<char>(changelog), {});
  EXPECT_NE(text.find("\n## " + std::to_string(version.first) + '.' + std::to_string(version.second)),
            std::string::npos)
      << "The changelog has no such version";
}

}  // namespace
