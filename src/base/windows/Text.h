// SPDX-License-Identifier: Apache-2.0
// Between our texts and those of Windows.
#pragma once

#include <string>
#include <string_view>

namespace base {

// What is no text of the one encoding becomes U+FFFD in the other.
std::wstring ToWide(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);

}  // namespace base
