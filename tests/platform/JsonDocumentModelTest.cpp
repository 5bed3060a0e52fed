// SPDX-License-Identifier: Apache-2.0
// Random documents, read and written at random: whatever was read or written before, a document must answer, and take
// a write, as a fresh one of the same text does. What each path and write means stands in JsonDocumentTest.cpp.
#include <gtest/gtest.h>

#include <random>

#include "NetLink/RapidJsonProto.h"

namespace {

using NetLink::CRapidJsonProto;

class RandomDocuments : public testing::TestWithParam<unsigned int> {
 protected:
  std::size_t Below(std::size_t limit) { return m_random() % limit; }

  // Few names, so that duplicates and hits are frequent; two of them alike in length, first and last letter.
  std::string Name() {
    static const std::string names[] = {"a", "b", "abcd", "aXcd", "acbd", "Xtop", "Ytop", ""};
    return names[Below(40) == 0 ? 7 : Below(7)];
  }

  std::string Tree(int depth) {
    static const std::string scalars[] = {"null", "true", "false", "0", "1", "\"1\""};
    if (depth == 0 || Below(4) == 0) return scalars[Below(6)];
    const bool isObject = Below(2) == 0;
    std::string text;
    for (std::size_t size = Below(6); size > 0; --size) {
      text += (text.empty() ? "" : ",") + (isObject ? "\"" + Name() + "\":" : "") + Tree(depth - 1);
    }
    return isObject ? "{" + text + "}" : "[" + text + "]";
  }

  // Mostly a neighbour of the path before, as callers read.
  std::string NextPath() {
    while (!m_steps.empty() && Below(3) != 0) m_steps.pop_back();
    while (m_steps.size() < 5 && (m_steps.empty() || Below(2) != 0)) {
      m_steps.push_back("/" + Name() + (Below(2) ? "[" + std::to_string(Below(4)) + "]" : ""));
    }
    std::string path;
    for (const std::string& step : m_steps) path += step;
    return path;
  }

 private:
  std::mt19937 m_random{GetParam()};
  std::vector<std::string> m_steps;
};

std::string Reads(const CRapidJsonProto& document, const std::string& path) {
  return std::to_string(document.get_cnt(path)) + " " + std::to_string(document.get_int_v(path, -7)) + " " +
         document.get_v(path, "none") + (document.get_bool_v(path, false) ? " true" : "");
}

TEST_P(RandomDocuments, StayInStepWhileTheyAreWritten) {
  for (int round = 0; round < 25 && !HasFailure(); ++round) {
    CRapidJsonProto document;
    ASSERT_TRUE(document.set_str(round % 2 ? Tree(4) : "{}"));
    for (int edit = 0; edit < 60 && !HasFailure(); ++edit) {
      const std::string before = document.get_str(0);
      CRapidJsonProto fresh;
      ASSERT_TRUE(fresh.set_str(before));
      const std::string path = NextPath();
      document.set_v(path, edit);
      fresh.set_v(path, edit);
      ASSERT_EQ(document.get_str(0), fresh.get_str(0)) << before << " " << path;
      for (int read = 0; read < 4; ++read) {
        const std::string place = NextPath();
        ASSERT_TRUE(fresh.set_str(document.get_str(0)));
        EXPECT_EQ(Reads(document, place), Reads(fresh, place)) << document.get_str(0) << " " << place;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDocuments, testing::Range(1U, 7U));

}  // namespace
