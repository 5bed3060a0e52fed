// SPDX-License-Identifier: Apache-2.0
// What windows show, in words.
#pragma once

#include <vector>

#include "drawing/Page.h"

namespace drawing {

// What belongs to a line of words in a drawing.
enum class Mark { kNone, kPreset, kMove, kRelated, kDigitalZoom, kCentreMark, kZoomWindow, kFishEye, kCycle, kMap };

struct Fact {
  Mark mark = Mark::kNone;
  QString text;
  bool isDetail = false;  // says more about the line before it
  int number = 0;         // of the zoom window that a kZoomWindow is about
};

// All that there is to say of a window but its number and its name, the most important first.
std::vector<Fact> FactsOf(const Window& window);

// "Page 2 of 3, turned every 20 s · layout 6 · 5 windows".
QString HeadOf(const Page& page);

// The whole page, for those who do not see it: the head, then a line for each window.
QString InWords(const Page& page);

}  // namespace drawing
