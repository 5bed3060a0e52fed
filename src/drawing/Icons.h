// SPDX-License-Identifier: Apache-2.0
// The small signs in a drawing, drawn by code.
#pragma once

#include <QPainter>

#include "drawing/Words.h"

namespace drawing {

// Draws the kind's icon, in lines of one colour, into the largest square in the middle of `place`. An empty window has
// none.
void DrawIcon(QPainter& painter, WindowKind kind, const QRectF& place, const QColor& colour);

// The small sign before a line of words.
void DrawMark(QPainter& painter, Mark mark, const QRectF& place, const QColor& colour);

}  // namespace drawing
