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

#include "QorviViewPlugin/Functions.h"

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

TEST(FunctionsHeader, NamesTheExportedFunctionsAndSaysWhichIsMissing) {
  Names names;
#define QORVI_FUNCTION(name) names.insert(#name);
  QORVI_EXPORTED_FUNCTIONS(QORVI_FUNCTION)
#undef QORVI_FUNCTION
  EXPECT_EQ(Difference(Matches(ContentOf(EXPORT_TABLE), "^([A-Z][A-Za-z]+)$"), names), "");
  QorviViewPlugin::Functions functions;
  const auto address = reinterpret_cast<void (*)()>(&functions);
  EXPECT_EQ(functions.Load([&](const char*) { return address; }), nullptr);
  EXPECT_EQ(reinterpret_cast<void (*)()>(functions.ViewRegisterResourceUpdate), address);
  for (const std::string& name : names) {
    EXPECT_EQ(functions.Load([&](const char* asked) { return asked == name ? nullptr : address; }), name);
  }
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

// Without what lines begin and end with, and without empty ones.
std::string Plain(const std::string& text) {
  return std::regex_replace(text, std::regex("[ \\t]*\n\\s*"), "\n");
}

TEST(WritingAHost, ShowsTheCodeOfTheExamples) {
  std::string examples;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(EXAMPLES)) {
    if (entry.is_regular_file()) examples += Plain("\n" + ContentOf(entry.path()));
  }
  const std::string document = ContentOf(HOST_DOCUMENT);
  int blocks = 0;
  for (size_t at = 0;
       (at = std::min(document.find("```cpp\n", at), document.find("```cmake\n", at))) != std::string::npos; ++blocks) {
    at = document.find('\n', at);
    const size_t end = document.find("\n```\n", at);
    const std::string block = Plain(document.substr(at, end - at) + "\n");
    EXPECT_NE(examples.find(block), std::string::npos) << "no example has" << block;
    at = end + 5;
  }
  EXPECT_EQ(blocks, 12);
}

TEST(WritingAHost, ListsTheKeysThatTheLibraryHasTranslated) {
  Names keys;
  for (const auto& entry : std::filesystem::directory_iterator(PLUGIN_SOURCES)) {
    if (!entry.is_regular_file()) continue;
    keys.merge(Matches(ContentOf(entry.path()), R"re(Translated\("(\S+?)"\))re"));
    keys.merge(Matches(ContentOf(entry.path()), R"re(\{"(\S+)", ViewType)re"));
  }
  const std::string document = ContentOf(HOST_DOCUMENT);
  const size_t from = document.find("| Key | Stands for |");
  EXPECT_EQ(Difference(Matches(document.substr(from, document.find("\n\n", from) - from), "^\\| `(\\S+)` \\|"), keys),
            "");
}

}  // namespace
}  // namespace core_test
