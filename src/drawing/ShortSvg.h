// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace drawing {

// A page's SVG, drawn in Theme::Numbered(), as an element for use within another document: without title, words and
// namespace, its colours and what else repeats as classes that ShortSvgRules gives a meaning, its places to a tenth of
// a pixel. Equal signs are equal paths, wherever they stand. It begins `<svg class="drawing" width="1280"
// height="776"`.
QString ShortSvg(const QString& svg);

// The CSS of such elements: light, and dark where a screen's reader prefers that.
QString ShortSvgRules();

}  // namespace drawing
