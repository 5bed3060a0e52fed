// SPDX-License-Identifier: Apache-2.0
#include "host/PageText.h"

#include <gtest/gtest.h>

#include "Plans.h"

namespace test {
namespace {

std::string Window(int number, const std::string& name) {
  return R"({"Sequence":)" + std::to_string(number) + R"(,"ResourceType":1002,"ResourceID":"5","ResourceName":")" +
         name + "\"}";
}

TEST(PageTextTest, BoxesJoinAndNamesAreCutByTheColumnsTheyTake) {
  const drawing::Page page = OnePage(3, "1+2",
                                     Window(0, "A name that is longer than its window") + "," +
                                         Window(1, "きっぷうりばの窓口") + "," + Window(2, "e\u0301te\u0301"));
  EXPECT_EQ(host::DescribePage(page, 44),
            "North wall  (view 7)\n"
            "Page 1 · layout 3 “1+2” · 3 windows\n"
            "┌───────────────────────────┬─────────────┐\n"
            "│ 0 A name that is longer … │ 1 きっぷう… │\n"
            "│ door 5                    │ door 5      │\n"
            "│                           ├─────────────┤\n"
            "│                           │ 2 e\u0301te\u0301       │\n"
            "│                           │ door 5      │\n"
            "└───────────────────────────┴─────────────┘\n");
}

TEST(PageTextTest, ANameThatJustFitsIsNotCut) {
  for (const auto& [name, shown] : {std::pair("A name of 21 columns.", "A name of 21 columns."),
                                    {"きっぷうりばの窓口は.", "きっぷうりばの窓口は."},
                                    // The first and the last wide syllable, and a mark upon a wide letter.
                                    {"가힣か\u3099 in 21 columns.", "가힣か\u3099 in 21 columns."},
                                    {"A name of 22 columns..", "A name of 22 columns…"},
                                    {"きっぷうりばの窓口は..", "きっぷうりばの窓口は…"}}) {
    const std::string text = host::DescribePage(OnePage(1, "", Window(0, name)), 27);
    EXPECT_NE(text.find(std::string("│ 0 ") + shown + " │\n"), std::string::npos) << text;
  }
}

TEST(PageTextTest, WhatHasNoRoomIsCountedAndPlacesWithoutWindowAreSaid) {
  std::string resources;
  for (int i = 0; i < 20; ++i)
    resources += std::string(i ? "," : "") + R"({"ResourceID":")" + std::to_string(i) + "\"}";
  const drawing::Page page = OnePage(
      2, "1x2", Camera(0, R"("CycleInfo":{"cycle_type":0,"cycle_time":4,"CycleResourceID":[)" + resources + "]}"));
  const std::string text = host::DescribePage(page, 60);
  for (const char* part : {"20 cameras, 4 s each:", "camera 2  ", "and 17 more", "│ no window"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " is not in\n" << text;
  }
  EXPECT_EQ(host::DescribePage(drawing::ReadPage({}, 1), 60), "  (view )\nNo pages\n") << "and no window either";
}

}  // namespace
}  // namespace test
