// SPDX-License-Identifier: Apache-2.0
#include "host/PageText.h"

#include <algorithm>

#include "drawing/Grid.h"
#include "drawing/Words.h"
#include "host/Look.h"
#include "host/TextCanvas.h"

namespace host {
namespace {

constexpr int kLeastCellWidth = 12;  // with its left border
constexpr int kLeastLines = 2;
constexpr int kMostLines = 9;

// As the terminal is to show it.
QString Shown(QString text) {
  return IsAscii() ? text.replace("·", "-") : text;
}

std::vector<QString> LinesOf(const drawing::Cell& cell) {
  if (!cell.window) return {QString::number(cell.number), "no window"};
  const QString number = QString::number(cell.number);
  if (cell.window->kind == drawing::WindowKind::kEmpty) return {number, "empty window"};
  std::vector<QString> lines = {number + " " + cell.window->name};
  for (const drawing::Fact& fact : FactsOf(*cell.window)) {
    lines.push_back((fact.isDetail ? "  " : "") + Shown(fact.text));
  }
  return lines;
}

// Where each row of the grid begins, its upper border included, and where the last one ends: each as high as the cell
// that needs most, where that is not too much. A cell of several rows counts for its last one.
std::vector<int> TopsOf(const drawing::Grid& grid) {
  std::vector<int> tops{0};
  for (int row = 0; row < grid.rows; ++row) {
    int end = tops.back() + kLeastLines + 1;
    for (const drawing::Cell& cell : grid.cells) {
      if (cell.place.bottom() != row) continue;
      const int lines = std::min(static_cast<int>(LinesOf(cell).size()), kMostLines);
      end = std::max(end, tops[static_cast<size_t>(cell.place.top())] + lines + 1);
    }
    tops.push_back(end);
  }
  return tops;
}

class PageWriter {
 public:
  PageWriter(const drawing::Page& page, int columns)
      : m_grid(MakeGrid(page)),
        m_cellWidth(std::max((columns - 1) / m_grid.columns, kLeastCellWidth)),
        m_tops(TopsOf(m_grid)),
        m_canvas(m_cellWidth * m_grid.columns + 1, m_tops.back() + 1) {}

  std::string Text() {
    for (const drawing::Cell& cell : m_grid.cells) Write(cell);
    return m_canvas.Text();
  }

 private:
  void Write(const drawing::Cell& cell) {
    const int top = m_tops[static_cast<size_t>(cell.place.top())];
    const int bottom = m_tops[static_cast<size_t>(cell.place.bottom()) + 1];
    const QRect box(cell.place.left() * m_cellWidth, top, cell.place.width() * m_cellWidth + 1, bottom - top + 1);
    m_canvas.DrawBox(box);
    std::vector<QString> lines = LinesOf(cell);
    const size_t room = static_cast<size_t>(box.height() - 2);
    if (lines.size() > room) {
      const size_t left = lines.size() - room + 1;
      lines.resize(room - 1);
      lines.push_back("  and " + QString::number(left) + " more");
    }
    int row = box.top() + 1;
    for (const QString& line : lines) m_canvas.Write(box.left() + 2, row++, box.width() - 4, line);
  }

  const drawing::Grid m_grid;
  const int m_cellWidth;
  const std::vector<int> m_tops;
  TextCanvas m_canvas;
};

}  // namespace

std::string DescribePage(const drawing::Page& page, int columns) {
  const QString head = page.view + "  (view " + page.viewId + ")\n" + Shown(HeadOf(page)) + "\n";
  if (page.count == 0) return head.toStdString();
  return head.toStdString() + PageWriter(page, columns).Text();
}

}  // namespace host
