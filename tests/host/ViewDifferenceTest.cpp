// SPDX-License-Identifier: Apache-2.0
#include "host/edit/ViewDifference.h"

#include <gtest/gtest.h>

namespace host {
namespace {

EditableView WithPages(const std::string& pages) {
  EditableView view;
  view.pages = "[" + pages + "]";
  return view;
}

TEST(ViewDifferenceTest, PagesWindowsAndTheirOrderAreTold) {
  const std::string first = R"({"Sequence":0,"ResourceType":1001,"ResourceID":"5"})";
  const std::string other = R"({"Sequence":1,"ResourceType":0,"ResourceID":"-1"})";
  const std::string page = R"({"windowDivision":4,"PlanItems":[)" + first + "," + other + "]}";
  const std::string turned = R"({"windowDivision":4,"PlanItems":[)" + other + "," + first + "]}";
  const std::string single = R"({"windowDivision":1,"PlanItems":[)" + first + "]}";
  const auto differences = [](const std::string& before, const std::string& after) {
    return Differences(WithPages(before), WithPages(after));
  };
  using Lines = std::vector<std::string>;
  EXPECT_EQ(differences(page, page), Lines());
  EXPECT_EQ(differences(page, turned), Lines{"page 1: the order of its windows"});
  EXPECT_EQ(differences(page, page + "," + single), Lines{"page 2: new, with 1 window"});
  EXPECT_EQ(differences(single + "," + page, single), Lines{"page 2: gone, with 2 windows"});
  EXPECT_EQ(differences(page, single), (Lines{"page 1: windowDivision 4 -> 1", "page 1, window 1: gone, empty"}));
  EXPECT_EQ(differences(single, page), (Lines{"page 1: windowDivision 1 -> 4", "page 1, window 1: new, empty"}));
  EXPECT_EQ(differences("", single), Lines{"page 1: new, with 1 window"});
}

}  // namespace
}  // namespace host
