// SPDX-License-Identifier: Apache-2.0
// Ids among the arguments of a command.
#pragma once

#include <string>

namespace host {

// Whether the text is a decimal id as the exchanges write them: digits only, within 32 bits, no leading zero.
bool IsId(const std::string& text);

// The id itself. Throws Failure kUsage, which calls the text `what`, when it is none.
std::string RequireId(const std::string& text, const std::string& what);

}  // namespace host
