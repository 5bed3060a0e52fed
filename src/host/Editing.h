// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Options.h"

namespace host {

// Says on stderr which server a command edits, and as whom: a wrong one is noticed before it is too late.
void SayWhatIsEdited(const GlobalOptions& options);

}  // namespace host
