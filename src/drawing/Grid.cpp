// SPDX-License-Identifier: Apache-2.0
#include "drawing/Grid.h"

#include <QRegularExpression>
#include <algorithm>

namespace drawing {
namespace {

// No page is cut into more than this; a page that holds more windows than that gets as many cells as it has windows.
constexpr int kMostCells = 256;

// One large square of cells at the upper left, small cells right of it and below.
struct Uneven {
  const char* name;
  int columns;
  int rows;
  int large;
};
constexpr Uneven kUneven[] = {{"1+2", 3, 2, 2}, {"1+5", 3, 3, 2}, {"1+7", 4, 4, 3}};

void AddCell(Grid& grid, const QRect& place) {
  grid.cells.push_back({place, static_cast<int>(grid.cells.size()), nullptr});
}

Grid Even(int columns, int rows, int count) {
  Grid grid{columns, rows, {}};
  for (int i = 0; i < count; ++i) AddCell(grid, QRect(i % columns, i / columns, 1, 1));
  return grid;
}

Grid NearSquare(int count) {
  int columns = 1;
  while (columns * columns < count) ++columns;
  return Even(columns, (count + columns - 1) / columns, count);
}

Grid Shape(const Uneven& uneven) {
  Grid grid{uneven.columns, uneven.rows, {}};
  const QRect large(0, 0, uneven.large, uneven.large);
  AddCell(grid, large);
  for (int i = 0; i < uneven.columns * uneven.rows; ++i) {
    const QRect small(i % uneven.columns, i / uneven.columns, 1, 1);
    if (!large.contains(small)) AddCell(grid, small);
  }
  return grid;
}

Grid Named(const Page& page) {
  const QString name = page.customDivision.trimmed();
  for (const Uneven& uneven : kUneven) {
    if (name == uneven.name) return Shape(uneven);
  }
  static const QRegularExpression rowsByColumns("^([1-9][0-9]?)[xX*×]([1-9][0-9]?)$");
  if (const auto match = rowsByColumns.match(name); match.hasMatch()) {
    const int rows = match.captured(1).toInt();
    const int columns = match.captured(2).toInt();
    if (rows * columns <= kMostCells) return Even(columns, rows, rows * columns);
  }
  return NearSquare(std::clamp(page.division, 1, kMostCells));
}

Cell* FreeCell(Grid& grid, int number) {
  if (number < 0 || number >= static_cast<int>(grid.cells.size())) return nullptr;
  Cell& cell = grid.cells[static_cast<size_t>(number)];
  return cell.window ? nullptr : &cell;
}

void Place(const std::vector<Window>& windows, Grid& grid) {
  std::vector<const Window*> homeless;
  for (const Window& window : windows) {
    if (Cell* cell = FreeCell(grid, window.number)) {
      cell->window = &window;
    } else {
      homeless.push_back(&window);
    }
  }
  auto cell = grid.cells.begin();
  for (const Window* window : homeless) {
    cell = std::find_if(cell, grid.cells.end(), [](const Cell& next) { return !next.window; });
    cell->window = window;
    cell->number = window->number;
  }
}

}  // namespace

Grid MakeGrid(const Page& page) {
  Grid grid = Named(page);
  if (grid.cells.size() < page.windows.size()) grid = NearSquare(static_cast<int>(page.windows.size()));
  Place(page.windows, grid);
  return grid;
}

}  // namespace drawing
