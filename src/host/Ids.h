// SPDX-License-Identifier: Apache-2.0
// Ids among the arguments of a command.
#pragma once

#include <string>

namespace host {

// Whether the text is a decimal id as the exchanges write them: digits only, within 32 bits, no leading zero.
bool IsId(const std::string& text);

}  // namespace host
