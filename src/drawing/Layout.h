// SPDX-License-Identifier: Apache-2.0
// How one window is divided into its name, its picture and its words.
#pragma once

#include <QRectF>

#include "drawing/Words.h"

namespace drawing {

// How one window's place is divided: a bar with its name, its picture, and the lines of words about it.
struct Layout {
  double barLetters = 10;
  QRectF bar;
  QRectF picture;
  double letters = 10;
  QRectF facts;  // for `lines` lines of equal height
  int lines = 0;

  double LineHeight() const;
};

// The words stand below the picture or right of it, whichever leaves more of the place for the picture while all words
// are to be read. Where there are too many for that, their letters become smaller; where that does not do, the last
// lines are left out, or cut. REQUIRES: a QGuiApplication.
Layout LayOut(const QRectF& place, const Window& window);

// How far a line of words stands in, behind its sign or below the line that it belongs to.
double IndentOf(const Fact& fact, double letters);

}  // namespace drawing
