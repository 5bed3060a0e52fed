// SPDX-License-Identifier: Apache-2.0
#include "drawing/PagePainter.h"

#include <algorithm>
#include <map>

#include "drawing/Grid.h"
#include "drawing/Icons.h"
#include "drawing/Layout.h"
#include "drawing/Lettering.h"
#include "drawing/Scene.h"

namespace drawing {
namespace {

constexpr int kHeadHeight = 56;
constexpr int kLeastWidth = 1280;
constexpr int kMostWidth = 4000;
constexpr int kLeastCellWidth = 210;
constexpr double kGap = 3;

class WindowPainter {
 public:
  WindowPainter(QPainter& painter, const Theme& theme, const QRectF& place, const Window& window)
      : m_painter(painter), m_theme(theme), m_place(place), m_window(window), m_layout(LayOut(place, window)) {}

  void Draw() {
    m_painter.setPen(QPen(m_theme.edge, 1));
    m_painter.setBrush(m_theme.cell);
    m_painter.drawRect(m_place);
    DrawBar();
    DrawScene(m_painter, m_theme, m_window, m_layout.picture);
    DrawFacts();
  }

  QRectF Picture() const { return m_layout.picture; }

 private:
  void DrawBar() {
    m_painter.setPen(QPen(m_theme.edge, 1));
    m_painter.setBrush(m_theme.bar);
    m_painter.drawRect(m_layout.bar);
    DrawIcon(m_painter, m_window.kind, m_layout.icon, m_theme.Of(m_window.kind));
    m_painter.setPen(m_theme.dimText);
    DrawLine(m_painter, Lettering(m_layout.barLetters), m_layout.number, QString::number(m_window.number));
    m_painter.setPen(m_theme.text);
    const QString name = m_window.name.isEmpty() ? WordOf(m_window.type) : m_window.name;
    DrawLine(m_painter, Lettering(m_layout.barLetters, true), m_layout.name, name);
  }

  void DrawFacts() {
    QRectF place(m_layout.facts.topLeft(), QSizeF(m_layout.facts.width(), m_layout.LineHeight()));
    for (const WordLine& line : m_layout.lines) {
      DrawWords(line, place);
      place.translate(0, place.height());
    }
  }

  void DrawWords(const WordLine& line, QRectF place) {
    const Fact& fact = line.fact;
    const double sign = m_layout.letters * 1.2;
    const QRectF signPlace(place.left(), place.center().y() - sign / 2, sign, sign);
    if (!line.isContinued) DrawMark(m_painter, fact.mark, signPlace, m_theme.Of(fact));
    place.setLeft(place.left() + IndentOf(fact, m_layout.letters));
    m_painter.setPen(m_theme.Of(fact));
    DrawLine(m_painter, Lettering(m_layout.letters), place, fact.text);
  }

  QPainter& m_painter;
  const Theme& m_theme;
  const QRectF m_place;
  const Window& m_window;
  const Layout m_layout;
};

// A place without a picture: an empty window, or a number of the grid that no window is stored for.
void DrawEmpty(QPainter& painter, const Theme& theme, const Cell& cell, const QRectF& place) {
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(theme.edge, 1, cell.window ? Qt::DashLine : Qt::DotLine));
  painter.drawRect(place);
  const double size = std::clamp(place.height() / 9, 9.0, 17.0);
  painter.setPen(theme.dimText);
  DrawLine(painter, Lettering(size), QRectF(place.topLeft() + QPointF(6, 2), QSizeF(place.width() - 12, size * 1.9)),
           QString::number(cell.number));
  DrawCentred(painter, Lettering(size), place, cell.window ? "empty window" : "no window");
}

// From one box to another by the sides that face each other; from edge to edge where none do.
QLineF Between(const QRectF& from, const QRectF& to) {
  const QPointF start = from.center(), end = to.center();
  if (from.right() <= to.left()) return {{from.right(), start.y()}, {to.left(), end.y()}};
  if (to.right() <= from.left()) return {{from.left(), start.y()}, {to.right(), end.y()}};
  if (from.bottom() <= to.top()) return {{start.x(), from.bottom()}, {end.x(), to.top()}};
  return {{start.x(), from.top()}, {end.x(), to.bottom()}};
}

// An arrow on a ground of its own, so that it is seen across whatever it crosses.
void DrawArrow(QPainter& painter, const Theme& theme, const QLineF& line, const QColor& colour) {
  if (line.length() < 1) return;
  const QPointF from = line.p1(), to = line.p2();
  const QPointF along = (to - from) / line.length() * 12;
  const QPointF across(along.y() * 0.5, -along.x() * 0.5);
  for (const bool isGround : {true, false}) {
    painter.setPen(QPen(isGround ? theme.cell : colour, isGround ? 6 : 2.5, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(from, to - along * 0.6);
  }
  painter.setPen(QPen(theme.cell, 1.5));
  painter.setBrush(colour);
  painter.drawPolygon(QPolygonF({to, to - along + across, to - along - across}));
  painter.drawEllipse(from, 4.5, 4.5);
}

class PagePainter {
 public:
  PagePainter(QPainter& painter, const Page& page, const Theme& theme)
      : m_painter(painter), m_page(page), m_theme(theme), m_grid(MakeGrid(page)), m_size(SizeOf(page)) {}

  void Draw() {
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(m_theme.canvas);
    m_painter.drawRect(QRectF(QPointF(0, 0), m_size));
    DrawHead();
    if (m_page.count == 0) return DrawNoPages();
    for (const Cell& cell : m_grid.cells) DrawCell(cell);
    for (const Window& window : m_page.windows) DrawLink(window);
  }

 private:
  void DrawHead() {
    const QRectF head(14, 0, m_size.width() - 28, kHeadHeight);
    m_painter.setPen(m_theme.dimText);
    const QFont small = Lettering(16);
    const QString right = HeadOf(m_page);
    const double taken = std::min(WidthOf(small, right), head.width() * 0.6);
    DrawLine(m_painter, small, QRectF(head.right() - taken, 0, taken + 1, kHeadHeight), right);
    m_painter.setPen(m_theme.text);
    const QString from = m_page.sharedBy.isEmpty() ? "" : " (shared by " + m_page.sharedBy + ")";
    DrawLine(m_painter, Lettering(22, true), head.adjusted(0, 0, -taken - 20, 0), m_page.view + from);
  }

  void DrawNoPages() {
    m_painter.setPen(m_theme.dimText);
    DrawCentred(m_painter, Lettering(17), QRectF(QPointF(0, 0), m_size), "no pages");
  }

  QRectF PlaceOf(const QRect& cells) const {
    const double width = (m_size.width() - kGap) / m_grid.columns;
    const double height = (m_size.height() - kHeadHeight - kGap) / m_grid.rows;
    const QRectF place(kGap + cells.left() * width, kHeadHeight + cells.top() * height, cells.width() * width - kGap,
                       cells.height() * height - kGap);
    return place;
  }

  void DrawCell(const Cell& cell) {
    const QRectF place = PlaceOf(cell.place);
    if (!cell.window || cell.window->kind == WindowKind::kEmpty) return DrawEmpty(m_painter, m_theme, cell, place);
    WindowPainter painter(m_painter, m_theme, place, *cell.window);
    painter.Draw();
    m_pictures[cell.window] = painter.Picture();
  }

  void DrawLink(const Window& window) {
    const Window* source = nullptr;
    const ZoomWindow* zoom = FindShown(m_page, window, source);
    if (!zoom || source == &window || m_pictures.count(source) == 0 || m_pictures.count(&window) == 0) return;
    const QRectF box = InPicture(m_pictures[source], zoom->box);
    DrawArrow(m_painter, m_theme, Between(box, m_pictures[&window]), m_theme.OfZoomWindow(zoom->number));
  }

  QPainter& m_painter;
  const Page& m_page;
  const Theme& m_theme;
  const Grid m_grid;
  const QSizeF m_size;
  std::map<const Window*, QRectF> m_pictures;
};

}  // namespace

QSize SizeOf(const Page& page) {
  const int width = std::clamp(MakeGrid(page).columns * kLeastCellWidth, kLeastWidth, kMostWidth);
  return {width, width * 9 / 16 + kHeadHeight};
}

void DrawPage(QPainter& painter, const Page& page, const Theme& theme) {
  PagePainter(painter, page, theme).Draw();
}

}  // namespace drawing
