// SPDX-License-Identifier: Apache-2.0
// Ids among the arguments of a command.
#pragma once

#include <string>

namespace host {

// Whether the text is a decimal id as commands take them: digits only, within 32 bits, no leading zero.
bool IsId(const std::string& text);

// Whether something can have it: 0 and 4294967295, which is -1 where ids are signed, stand for nothing.
bool IsOfSomething(const std::string& id);

// Ids as the exchanges write those of windows, signed, and as lists of resources and cycles have them, unsigned. What
// is no id stays as it is.
std::string SignedId(const std::string& unsignedId);
std::string UnsignedId(const std::string& signedId);

// The id itself. Throws Failure kUsage, which calls the text `what`, when it is none.
std::string RequireId(const std::string& text, const std::string& what);

}  // namespace host
