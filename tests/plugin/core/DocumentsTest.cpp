// SPDX-License-Identifier: Apache-2.0
// What documents say about the code: what the built library exports and asks of the platform, as nm shows it, and which
// test holds which behaviour or promise.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <regex>
#include <set>
#include <string>

namespace core_test {
namespace {

using Names = std::set<std::string>;

std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

// What the expression's groups match, joined by dots, wherever it matches.
Names Matches(const std::string& text, const char* expression) {
  const std::regex regex(expression, std::regex::ECMAScript | std::regex::multiline);
  Names names;
  for (auto match = std::sregex_iterator(text.begin(), text.end(), regex); match != std::sregex_iterator(); ++match) {
    std::string name = (*match)[1];
    for (size_t group = 2; group < match->size(); ++group) name += "." + (*match)[group].str();
    names.insert(name);
  }
  return names;
}

// Readable names of the symbols, "std::string" and "std::string_view" standing for their long forms.
Names Symbols(const std::string& kind) {
  const std::string command = std::string(NM_PROGRAM) + " -D -C " + kind + " '" + PLUGIN_LIBRARY + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  std::string text;
  char piece[4096];
  while (output && std::fgets(piece, sizeof piece, output.get())) text += piece;
  for (const auto& [from, to] :
       {std::pair{"std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >", "std::string"},
        std::pair{"std::basic_string_view<char, std::char_traits<char> >", "std::string_view"},
        std::pair{"[abi:cxx11]", ""}}) {
    for (size_t at = 0; (at = text.find(from)) != std::string::npos;) text.replace(at, std::string(from).size(), to);
  }
  return Matches(text, "^[0-9a-f ]+[A-Za-z] (.+)$");
}

// What stands in `actual` only ("+ name") and in `expected` only ("- name"), a line each.
std::string Difference(const Names& expected, const Names& actual) {
  std::string text;
  for (const std::string& name : actual) text += expected.contains(name) ? "" : "+ " + name + "\n";
  for (const std::string& name : expected) text += actual.contains(name) ? "" : "- " + name + "\n";
  return text;
}

TEST(ExportTable, HoldsTheDocumentedNamesAndNothingElse) {
  EXPECT_EQ(Difference(Matches(ContentOf(EXPORT_TABLE), "^([^#\n].*)$"), Symbols("--defined-only")), "");
}

TEST(ImportTable, HoldsTheDocumentedOperationsOfThePlatformAndNothingElseOfIt) {
  Names imported = Symbols("--undefined-only");
  std::erase_if(imported, [](const std::string& name) {
    return Matches(name, "^((Vant|NetLink|BizShared|ResourceStore|ResourceData|ErrorText|VeltControl|comm_method)::)")
        .empty();
  });
  EXPECT_EQ(Difference(Matches(ContentOf(PLATFORM_DOCUMENT), "^- `(.+?)`:"), imported), "");
}

TEST(KnownBehaviours, AreEachHeldByATestThatExists) {
  Names tests;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(TEST_SOURCES)) {
    if (entry.path().extension() != ".cpp") continue;
    tests.merge(Matches(ContentOf(entry.path()), R"(^TEST(?:_F|_P)?\((\w+),\s*(\w+)\))"));
  }
  Names named = Matches(ContentOf(BEHAVIOURS_DOCUMENT), R"(`([A-Z]\w+)\.(\w+)`)");
  EXPECT_GT(named.size(), 40u);
  named.merge(Matches(ContentOf(RELIABILITY_DOCUMENT), R"(`([A-Z]\w+)\.(\w+)`)"));
  for (const std::string& name : named) EXPECT_TRUE(tests.contains(name)) << name;
}

}  // namespace
}  // namespace core_test
