// SPDX-License-Identifier: Apache-2.0
// Lines of text in a drawing.
#pragma once

#include <QFont>
#include <QPainter>

namespace drawing {

// The drawing's font, `size` pixels of the drawing high. It asks for fonts by name and in a fixed order, so that two
// machines that have them draw alike.
QFont Lettering(double size, bool isBold = false);

// What the names of fonts that Lettering asks for begin with.
inline constexpr const char* kFirstFont = "DejaVu Sans";

// Draws one line into `place`, vertically in the middle, with the painter's pen; cut with an ellipsis where it does not
// fit. A text that is read from right to left begins at the right. Answers the width it took.
double DrawLine(QPainter& painter, const QFont& font, const QRectF& place, const QString& text);

// The same in the middle of `place`.
void DrawCentred(QPainter& painter, const QFont& font, const QRectF& place, const QString& text);

double WidthOf(const QFont& font, const QString& text);

}  // namespace drawing
