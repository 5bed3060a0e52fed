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
  struct Row {
    const char* what;
    int division;
    std::vector<int> numbers;
    std::vector<int> cells;  // the number that each cell shows; -1: no window
  };
  const Row rows[] = {
      {"by number, not by order", 4, {3, 0, 2}, {0, -1, 2, 3}},
      {"two of one number", 4, {1, 1}, {1, 1, -1, -1}},
      {"outside the grid", 4, {9, -5, 1}, {9, 1, -5, -1}},
      {"more than the division says", 1, {0, 1, 2}, {0, 1, 2}},
  };
  for (const Row& row : rows) {
    std::string windows;
    for (const int number : row.numbers) windows += (windows.empty() ? "" : ",") + Camera(number);
    const Page page = OnePage(row.division, "", windows);
    std::vector<int> shown;
    for (const drawing::Cell& cell : MakeGrid(page).cells) {
      shown.push_back(cell.window ? cell.window->number : -1);
      EXPECT_TRUE(!cell.window || cell.number == cell.window->number);
    }
    EXPECT_EQ(shown, row.cells) << row.what;
  }
}

}  // namespace
}  // namespace test
