// SPDX-License-Identifier: Apache-2.0
// Ids as commands take them and as the exchanges write them.
#pragma once

#include <string>

namespace host {

// Whether the text is a decimal id as commands take them: digits only, within 32 bits, no leading zero.
bool IsId(const std::string& text);

// -1, where ids are signed.
inline constexpr const char* kNoId = "4294967295";
// Whether something can have it, which 0 and kNoId stand for not.
bool IsOfSomething(const std::string& id);

// Ids as the exchanges write those of windows, signed, and as lists of resources and cycles have them, unsigned. What
// is no id stays as it is.
std::string SignedId(const std::string& unsignedId);
std::string UnsignedId(const std::string& signedId);

// The id itself. Throws Failure kUsage, which calls the text `what`, when it is none.
std::string RequireId(const std::string& text, const std::string& what);

}  // namespace host
