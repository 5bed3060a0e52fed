// SPDX-License-Identifier: Apache-2.0
#include "host/TextCanvas.h"

#include <QVector>
#include <algorithm>

#include "host/Look.h"

namespace host {
namespace {

enum Arm : unsigned { kUp = 1, kRight = 2, kDown = 4, kLeft = 8 };

// By the arms that a sign has.
constexpr const char* kBorders[] = {" ", "│", "─", "└", "│", "│", "┌", "├", "─", "┘", "─", "┴", "┐", "┤", "┬", "┼"};
constexpr const char* kAsciiBorders[] = {" ", "|", "-", "+", "|", "|", "+", "+",
                                         "-", "+", "-", "+", "+", "+", "+", "+"};

struct Range {
  uint first;
  uint last;
};

// What terminals show in two columns: the scripts of East Asia and pictographs.
constexpr Range kWide[] = {{0x1100, 0x115F},  {0x2E80, 0x303E},   {0x3041, 0xA4CF},   {0xA960, 0xA97C},
                           {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                           {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF},
                           {0x20000, 0x3FFFD}};

// Two for a wide character, none for a mark upon another.
int ColumnsOf(uint c) {
  const QChar::Category category = QChar::category(c);
  if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Other_Format) {
    return 0;
  }
  return std::any_of(std::begin(kWide), std::end(kWide), [&](const Range& r) { return c >= r.first && c <= r.last; })
             ? 2
             : 1;
}

int ColumnsOf(const QString& text) {
  int columns = 0;
  for (const uint c : text.toUcs4()) columns += ColumnsOf(c);
  return columns;
}

QVector<uint> Cut(const QString& text, int width) {
  QVector<uint> characters = text.toUcs4();
  if (ColumnsOf(text) <= width) return characters;
  const QVector<uint> ellipsis = QString(Ellipsis()).toUcs4();
  int taken = static_cast<int>(ellipsis.size());
  int kept = 0;
  while (taken + ColumnsOf(characters[kept]) <= width) taken += ColumnsOf(characters[kept++]);
  characters.resize(kept);
  return characters + ellipsis;
}

}  // namespace

TextCanvas::TextCanvas(int columns, int lines)
    : m_columns(columns), m_places(static_cast<size_t>(columns) * static_cast<size_t>(lines)) {}

void TextCanvas::DrawBox(const QRect& box) {
  for (int x = box.left(); x <= box.right(); ++x) {
    const unsigned sides = (x > box.left() ? kLeft : 0u) | (x < box.right() ? kRight : 0u);
    At(x, box.top()).borders |= sides;
    At(x, box.bottom()).borders |= sides;
  }
  for (int y = box.top(); y <= box.bottom(); ++y) {
    const unsigned sides = (y > box.top() ? kUp : 0u) | (y < box.bottom() ? kDown : 0u);
    At(box.left(), y).borders |= sides;
    At(box.right(), y).borders |= sides;
  }
}

void TextCanvas::Write(int column, int line, int width, const QString& text) {
  const int start = column;
  for (const uint c : Cut(text, width)) {
    const int columns = ColumnsOf(c);
    // A mark joins the character before it.
    const int at = columns > 0 || column == start ? column : column - (At(column - 1, line).isCovered ? 2 : 1);
    At(at, line).text += QString::fromUcs4(&c, 1);
    if (columns == 2) At(column + 1, line).isCovered = true;
    column += columns;
  }
}

QString TextCanvas::LineText(int line) const {
  QString text;
  for (int column = 0; column < m_columns; ++column) {
    const Place& place = m_places[static_cast<size_t>(line * m_columns + column)];
    if (place.isCovered) continue;
    text += place.text.isEmpty() ? QString((IsAscii() ? kAsciiBorders : kBorders)[place.borders]) : place.text;
  }
  while (text.endsWith(' ')) text.chop(1);
  return text;
}

std::string TextCanvas::Text() const {
  QString text;
  for (int line = 0; line < static_cast<int>(m_places.size()) / m_columns; ++line) text += LineText(line) + "\n";
  return text.toStdString();
}

}  // namespace host
