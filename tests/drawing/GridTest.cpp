// SPDX-License-Identifier: Apache-2.0
#include "drawing/Grid.h"

#include <gtest/gtest.h>

#include "../Cases.h"
#include "Plans.h"

namespace test {
namespace {

using drawing::Grid;
using drawing::MakeGrid;
using drawing::Page;

TEST(GridTest, ADivisionMakesItsGrid) {
  for (const auto& [division, expected] : testing_support::Cases(TABLES "Grids.txt")) {
    const size_t blank = std::min(division.find(' '), division.size());
    const Page page = OnePage(std::stoi(division), division.substr(std::min(blank + 1, division.size())), "");
    const Grid grid = MakeGrid(page);
    const auto text = [](const drawing::Cell& cell) {
      const QRect& place = cell.place;
      return QString(" (%1,%2 %3x%4)").arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height());
    };
    const QString made = QString("%1x%2, %3 cells:").arg(grid.columns).arg(grid.rows).arg(grid.cells.size());
    EXPECT_EQ((made + text(grid.cells.front()) + text(grid.cells.back())).toStdString(), expected.at(0)) << division;
    // No two cells overlap, and none leaves the grid.
    std::vector<QRect> taken;
    for (const drawing::Cell& cell : grid.cells) {
      EXPECT_TRUE(QRect(0, 0, grid.columns, grid.rows).contains(cell.place));
      for (const QRect& other : taken) EXPECT_FALSE(other.intersects(cell.place));
      taken.push_back(cell.place);
    }
  }
}

TEST(GridTest, WindowsStandByTheirNumbersAndNoneIsLost) {
  // The division, the numbers of its windows, and those that the cells show; -1: no window.
  const std::tuple<const char*, int, std::vector<int>, std::vector<int>> rows[] = {
      {"by number, not by order", 4, {3, 0, 2}, {0, -1, 2, 3}},
      {"two of one number", 4, {1, 1}, {1, 1, -1, -1}},
      {"outside the grid", 4, {9, -5, 1}, {9, 1, -5, -1}},
      {"more than the division says", 1, {0, 1, 2}, {0, 1, 2}},
  };
  for (const auto& [what, division, numbers, cells] : rows) {
    std::string windows;
    for (const int number : numbers) windows += (windows.empty() ? "" : ",") + Camera(number);
    const Page page = OnePage(division, "", windows);
    std::vector<int> shown;
    for (const drawing::Cell& cell : MakeGrid(page).cells) {
      shown.push_back(cell.window ? cell.window->number : -1);
      EXPECT_TRUE(!cell.window || cell.number == cell.window->number);
    }
    EXPECT_EQ(shown, cells) << what;
  }
}

}  // namespace
}  // namespace test
