// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/Options.h"

namespace host {

// The password: of --password-file, VIEWCTL_PASSWORD, the configuration's password-command, or whoever sits at the
// terminal. Throws Failure kUsage where there is none, the command fails, or the file cannot be read, is empty, or
// begins with a byte-order mark, which would be taken for a part of it.
std::string PasswordFor(const GlobalOptions& options);

}  // namespace host
