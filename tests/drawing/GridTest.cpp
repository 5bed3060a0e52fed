// SPDX-License-Identifier: Apache-2.0
#include "drawing/Grid.h"

#include <gtest/gtest.h>

#include "Plans.h"

namespace test {
namespace {

using drawing::Grid;
using drawing::MakeGrid;
using drawing::Page;

TEST(GridTest, ADivisionMakesItsGrid) {
  struct Row {
    int division;
    const char* custom;
    int columns, rows;
    size_t cells;
    QRect first, last;
  };
  const Row rows[] = {
      {1, "", 1, 1, 1, {0, 0, 1, 1}, {0, 0, 1, 1}},
      {2, "", 2, 1, 2, {0, 0, 1, 1}, {1, 0, 1, 1}},
      {6, "", 3, 2, 6, {0, 0, 1, 1}, {2, 1, 1, 1}},
      {13, "", 4, 4, 13, {0, 0, 1, 1}, {0, 3, 1, 1}},
      {64, "", 8, 8, 64, {0, 0, 1, 1}, {7, 7, 1, 1}},
      {6, "2x3", 3, 2, 6, {0, 0, 1, 1}, {2, 1, 1, 1}},
      {2, "2x1", 1, 2, 2, {0, 0, 1, 1}, {0, 1, 1, 1}},
      {3, "1+2", 3, 2, 3, {0, 0, 2, 2}, {2, 1, 1, 1}},
      {6, "1+5", 3, 3, 6, {0, 0, 2, 2}, {2, 2, 1, 1}},
      {8, "1+7", 4, 4, 8, {0, 0, 3, 3}, {3, 3, 1, 1}},
      // Names that mean nothing here, and numbers that no wall of windows has.
      {4, "spiral", 2, 2, 4, {0, 0, 1, 1}, {1, 1, 1, 1}},
      {4, "99x99", 2, 2, 4, {0, 0, 1, 1}, {1, 1, 1, 1}},
      {4, "0x4", 2, 2, 4, {0, 0, 1, 1}, {1, 1, 1, 1}},
      {0, "", 1, 1, 1, {0, 0, 1, 1}, {0, 0, 1, 1}},
      {-3, "", 1, 1, 1, {0, 0, 1, 1}, {0, 0, 1, 1}},
      {2147483647, "", 16, 16, 256, {0, 0, 1, 1}, {15, 15, 1, 1}},
  };
  for (const Row& row : rows) {
    const Page page = OnePage(row.division, row.custom, "");
    const Grid grid = MakeGrid(page);
    SCOPED_TRACE(std::to_string(row.division) + " " + row.custom);
    EXPECT_EQ(grid.columns, row.columns);
    EXPECT_EQ(grid.rows, row.rows);
    ASSERT_EQ(grid.cells.size(), row.cells);
    EXPECT_EQ(grid.cells.front().place, row.first);
    EXPECT_EQ(grid.cells.back().place, row.last);
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
