// SPDX-License-Identifier: Apache-2.0
// Where the windows of a page stand.
#pragma once

#include <QRect>
#include <vector>

#include "drawing/Page.h"

namespace drawing {

struct Cell {
  QRect place;  // in columns and rows
  int number = 0;
  const Window* window = nullptr;  // of the page; null where no window is stored
};

struct Grid {
  int columns = 1;
  int rows = 1;
  std::vector<Cell> cells;  // of one number, in the order of the windows
};

// The grid of the page: what its custom division names ("2x3": two rows of three; "1+2", "1+5", "1+7": one large window
// and so many small ones), else near-square for its number of windows, left to right and down. A window stands in the
// cell of its number. One whose number has no cell, or one that is taken, stands in the first free cell, so that none
// is lost: a grid that is too small for the page's windows gives way to the near-square one that has room for all. The
// page must outlive the grid. Any thread.
Grid MakeGrid(const Page& page);

}  // namespace drawing
