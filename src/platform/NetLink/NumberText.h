// SPDX-License-Identifier: Apache-2.0
// Numbers out of texts, whatever the locale. Internal to the library.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NetLink {

// A text that is wholly -?[0-9]+ and fits 64 bits.
std::optional<std::int64_t> IntegerOf(std::string_view text);

// A text that is wholly -?[0-9]+(.[0-9]+)?([eE][+-]?[0-9]+)?; what a double cannot hold becomes its largest value of
// that sign, or zero.
std::optional<double> NumberOf(std::string_view text);

}  // namespace NetLink
