// SPDX-License-Identifier: Apache-2.0
// Tables of texts that stand in a file beside the test: under "# <name>" a line for each text that is read, and below
// it, indented, what is made of it.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace testing_support {

struct Case {
  std::string text;
  std::vector<std::string> expected;  // "(nothing)" stands for an empty line
};

inline std::vector<Case> Cases(const char* file, const std::string& name) {
  const std::string section = "# " + name;
  std::ifstream lines(file);
  std::vector<Case> cases;
  bool isWanted = false;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("# ")) {
      isWanted = line == section;
    } else if (isWanted && line.starts_with("  ")) {
      cases.back().expected.push_back(line == "  (nothing)" ? "" : line.substr(2));
    } else if (isWanted && !line.empty()) {
      cases.push_back({line, {}});
    }
  }
  EXPECT_FALSE(cases.empty()) << section << " is not in " << file;
  return cases;
}
// Those of the running test.
inline std::vector<Case> Cases(const char* file) {
  return Cases(file, testing::UnitTest::GetInstance()->current_test_info()->name());
}

}  // namespace testing_support
