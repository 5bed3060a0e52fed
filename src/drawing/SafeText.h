// SPDX-License-Identifier: Apache-2.0
// What of a name may be shown.
#pragma once

#include <QString>

namespace drawing {

// The text as it may be shown to people: control characters, line and paragraph separators, marks that turn the reading
// direction, halves of surrogate pairs and what is no character are written \u001b. Any thread.
QString SafeText(const QString& text);

}  // namespace drawing
