// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/commands/Commands.h"

namespace host {

// Which server is meant, and who logs in, where the command line leaves it open: VIEWCTL_SERVER and VIEWCTL_USER, and
// the file of named servers. An option always counts more, and --data means the own server.
// Throws Failure kUsage where a variable is empty or the file cannot be read.
void CompleteOptions(const CLI::App& app, GlobalOptions& options);

}  // namespace host
