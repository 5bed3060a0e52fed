// SPDX-License-Identifier: Apache-2.0
// The whole page: its windows, their frames and what links them.
#pragma once

#include <QPainter>

#include "drawing/Page.h"
#include "drawing/Theme.h"

namespace drawing {

// How large the drawing of the page is, in pixels. A page of many columns is wider, so that its windows keep a size in
// which their words can be read.
QSize SizeOf(const Page& page);

// Draws the page onto a device of that size. Nothing is drawn outside it, and nothing relies on clipping.
void DrawPage(QPainter& painter, const Page& page, const Theme& theme);

}  // namespace drawing
