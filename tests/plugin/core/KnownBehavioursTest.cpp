// SPDX-License-Identifier: Apache-2.0
// The lists of known behaviours and of promises name tests; each of them must exist.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace {

std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

// What the expression's two groups match, as "first.second".
std::set<std::string> Pairs(const std::string& text, const std::regex& expression) {
  std::set<std::string> pairs;
  for (auto match = std::sregex_iterator(text.begin(), text.end(), expression); match != std::sregex_iterator();
       ++match) {
    pairs.insert((*match)[1].str() + "." + (*match)[2].str());
  }
  return pairs;
}

TEST(KnownBehaviours, AreEachHeldByATestThatExists) {
  std::set<std::string> tests;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(TEST_SOURCES)) {
    if (entry.path().extension() == ".cpp") {
      tests.merge(Pairs(ContentOf(entry.path()), std::regex(R"(TEST(?:_F|_P)?\((\w+),\s*(\w+)\))")));
    }
  }
  const std::set<std::string> named = Pairs(ContentOf(BEHAVIOURS_DOCUMENT), std::regex(R"(`([A-Z]\w+)\.(\w+)`)"));
  EXPECT_GT(named.size(), 40u);
  for (const std::string& name : named) EXPECT_TRUE(tests.contains(name)) << name;
  for (const std::string& name : Pairs(ContentOf(RELIABILITY_DOCUMENT), std::regex(R"(`([A-Z]\w+)\.(\w+)`)"))) {
    EXPECT_TRUE(tests.contains(name)) << name;
  }
}

}  // namespace
