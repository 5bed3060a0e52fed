// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Options.h"

namespace host {

// Says on stderr which server a command edits, and as whom: a wrong one is noticed before it is too late.
void SayWhatIsEdited(const GlobalOptions& options);

// The options for a command of which a dry run makes no store where there is none.
GlobalOptions WithoutNewStore(const GlobalOptions& options, bool isDryRun);

}  // namespace host
