// SPDX-License-Identifier: Apache-2.0
// The kinds of things that windows show, by the numbers that stand for them.
#pragma once

#include <QString>

namespace drawing {

enum class WindowKind { kEmpty, kCamera, kDoor, kElevator, kRadar, kMap, kWebPage, kElement, kText, kOther };

WindowKind KindOf(int resourceType);
// "camera", "door", ...; "resource" where the type has no name.
QString WordOf(int resourceType);

// The same of the numbers that relations count kinds by.
WindowKind KindOfRelated(int relatedType);
QString WordOfRelated(int relatedType);

}  // namespace drawing
