// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace host {

// Asks on the terminal, where it is not shown. REQUIRES: CanAsk. Throws Failure kUsage where none is given, or Ctrl-C
// is pressed.
std::string AskForPassword(const std::string& question);

}  // namespace host
