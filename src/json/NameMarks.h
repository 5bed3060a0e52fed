// SPDX-License-Identifier: Apache-2.0
// What lets a search for members in the order in which they stand pass over those that cannot bear a name.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace json {

// Marks of the names that were passed: a name whose mark is missing is not among them. The other way round nothing is
// said, since names share marks.
using NameMarks = std::bitset<256>;

inline std::uint8_t MarkOf(std::string_view name) {
  if (name.empty()) return 0;
  const auto at = [name](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(name[i])); };
  const std::uint32_t mixed =
      static_cast<std::uint32_t>(name.size()) | at(0) << 8 | at(name.size() / 2) << 16 | at(name.size() - 1) << 24;
  return static_cast<std::uint8_t>((mixed * 2654435769U) >> 24);
}

}  // namespace json
