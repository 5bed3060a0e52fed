// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/Options.h"

namespace host {

// The password that the options, or VIEWCTL_PASSWORD, give. Throws Failure kUsage where there is none, or its file
// cannot be read, is empty, or begins with a byte-order mark, which would be taken for a part of it.
std::string PasswordFor(const GlobalOptions& options);

}  // namespace host
