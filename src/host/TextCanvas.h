// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QRect>
#include <QString>
#include <string>
#include <vector>

namespace host {

// A sheet of a terminal's columns and lines, on which boxes that share borders join.
class TextCanvas {
 public:
  TextCanvas(int columns, int lines);

  // REQUIRES: the box, borders included, lies on the sheet.
  void DrawBox(const QRect& box);
  // Text of at most `width` columns; what is more is cut, and an ellipsis stands for it. REQUIRES: it lies on the
  // sheet.
  void Write(int column, int line, int width, const QString& text);
  // The lines, without blanks at their ends.
  std::string Text() const;

 private:
  struct Place {
    unsigned borders = 0;    // towards which sides a border leads from here
    QString text;            // a character with the marks upon it; empty behind a wide one, and for a blank
    bool isCovered = false;  // by the wide character before it
  };

  Place& At(int column, int line) { return m_places[static_cast<size_t>(line * m_columns + column)]; }
  QString LineText(int line) const;

  const int m_columns;
  std::vector<Place> m_places;
};

}  // namespace host
