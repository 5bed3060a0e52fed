// SPDX-License-Identifier: Apache-2.0
// The built library's dynamic symbols: what it exports, and what it asks of the platform.
#include <gtest/gtest.h>

#include <fstream>

#include "SymbolTable.h"

namespace core_test {
namespace {

// A line of the file for each name; those that begin with '#' and empty ones are comments.
std::set<std::string> NamesIn(const std::string& path) {
  std::set<std::string> names;
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') names.insert(line);
  }
  return names;
}

// The operations that the document lists: "- `name`: what is expected of it", which may go on in the next line.
std::set<std::string> OperationsIn(const std::string& path) {
  std::set<std::string> names;
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  for (std::string line; std::getline(file, line);) {
    const size_t end = line.find("`:");
    if (line.starts_with("- `") && end != std::string::npos) names.insert(line.substr(3, end - 3));
  }
  return names;
}

bool IsPlatformName(const std::string& name) {
  for (const char* library : {"Vant::", "NetLink::", "BizShared::", "ResourceStore::", "ResourceData::", "ErrorText::",
                              "VeltControl::", "comm_method::"}) {
    if (name.starts_with(library)) return true;
  }
  return false;
}

TEST(ExportTable, HoldsTheDocumentedNamesAndNothingElse) {
  EXPECT_EQ(Difference(NamesIn(EXPORT_TABLE), DefinedSymbols(PLUGIN_LIBRARY)), "");
}

TEST(ImportTable, HoldsTheDocumentedOperationsOfThePlatformAndNothingElseOfIt) {
  std::set<std::string> imported;
  for (const std::string& name : UndefinedSymbols(PLUGIN_LIBRARY)) {
    if (IsPlatformName(name)) imported.insert(name);
  }
  EXPECT_EQ(Difference(OperationsIn(PLATFORM_DOCUMENT), imported), "");
}

}  // namespace
}  // namespace core_test
