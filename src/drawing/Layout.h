// SPDX-License-Identifier: Apache-2.0
// How one window is divided into its name, its picture and its words.
#pragma once

#include <QRectF>

#include "drawing/Words.h"

namespace drawing {

// A line of words; `isContinued` where its fact began on a line before it.
struct WordLine {
  Fact fact;
  bool isContinued = false;
};

// How one window's place is divided: a bar with its name, its picture, and the lines of words about it.
struct Layout {
  double barLetters = 10;
  QRectF bar, icon, number, name;
  QRectF picture;
  double letters = 10;
  QRectF facts;  // for the lines, which are equally high
  std::vector<WordLine> lines;

  double LineHeight() const;
};

// The words stand below the picture or right of it, whichever leaves more of the place for the picture while all words
// are to be read; a name that the bar has no room for is the first of them. Where there are too many for that, their
// letters become smaller; where that does not do, the last lines are left out, and the last one says how many.
// REQUIRES: a QGuiApplication.
Layout LayOut(const QRectF& place, const Window& window);

// How far a line of words stands in, behind its sign or below the line that it belongs to.
double IndentOf(const Fact& fact, double letters);

}  // namespace drawing
