// SPDX-License-Identifier: Apache-2.0
// Which of a host's ids mean the top of the tree, and who owns what has a given type. Any thread. The conversion of ids
// to and from texts is in base/TextConversion.h.
#pragma once

#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {

// The ids by which a host names the top of the tree, beside -1.
inline constexpr unsigned int kHostTopLevel = AsUnsigned(-2);
inline constexpr unsigned int kHostOtherTopLevel = AsUnsigned(-4);

// kNoId for either of these two; any other id as it is.
unsigned int TopLevelAsNone(unsigned int id);

// The owner of a plan or plan group of that type: nobody where it is public, else the current user.
unsigned int OwnerForType(int type);

}  // namespace QorviViewPlugin
