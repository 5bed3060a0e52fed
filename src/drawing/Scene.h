// SPDX-License-Identifier: Apache-2.0
// The inner picture of a window: what it shows, with what belongs to the picture drawn to scale.
#pragma once

#include <QPainter>

#include "drawing/Theme.h"

namespace drawing {

// The largest picture in `place`, at its upper left: round where it is a fisheye's, else 16 by 9. Boxes of the window
// are fractions of it.
QRectF PictureIn(const Window& window, const QRectF& place);

void DrawScene(QPainter& painter, const Theme& theme, const Window& window, const QRectF& picture);

// A box of the picture on the drawing.
QRectF InPicture(const QRectF& picture, const QRectF& box);

}  // namespace drawing
