// SPDX-License-Identifier: Apache-2.0
// The colours, light and dark.
#pragma once

#include <QColor>
#include <vector>

#include "drawing/Words.h"

namespace drawing {

// The colours of a drawing. Text stands out from what is behind it by 4.5 to 1 at least.
struct Theme {
  QColor canvas, cell, bar, edge, scene, sceneEdge, text, dimText;
  QColor digitalZoom, centreMark, fishEye, cycle, map, related, preset;
  QColor kinds[10];       // by WindowKind
  QColor zoomWindows[6];  // of zoom windows by their number; they come again after six

  static const Theme& Light();
  static const Theme& Dark();
  // Its colours are their own numbers: each stands for the one at its place in All() of another theme.
  static const Theme& Numbered();
  static int NumberOf(const QColor& colour) { return colour.blue(); }
  std::vector<QColor> All() const;

  QColor Of(WindowKind kind) const;
  QColor Of(const Fact& fact) const;
  // Of a zoom window, its frame and the link to it.
  QColor OfZoomWindow(int number) const;

 private:
  std::vector<QColor*> Places();
};

}  // namespace drawing
