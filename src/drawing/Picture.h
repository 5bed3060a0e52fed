// SPDX-License-Identifier: Apache-2.0
// The page as a file.
#pragma once

#include <QByteArray>

#include "drawing/Page.h"
#include "drawing/Theme.h"

namespace drawing {

enum class Format { kSvg, kPng };

// The page as a file: the same bytes for the same page, theme and fonts. Text in an SVG stays text; its title and
// description say the page in words. Empty when there is no memory for a PNG.
// REQUIRES: a QGuiApplication; called on its thread.
QByteArray MakePicture(const Page& page, const Theme& theme, Format format);

// The page as ShortSvg (ShortSvg.h) makes it, in UTF-8. REQUIRES: as MakePicture.
QByteArray MakeShortSvg(const Page& page);

}  // namespace drawing
