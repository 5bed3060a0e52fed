// SPDX-License-Identifier: Apache-2.0
// A number for a name, so that most names which differ can be told apart without comparing them. Stateless: any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace json {

// Few names of one object share theirs.
inline std::uint8_t NameMark(std::string_view name) {
  if (name.empty()) return 0;
  const auto at = [name](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(name[i])); };
  const std::uint32_t mixed =
      static_cast<std::uint32_t>(name.size()) | at(0) << 8 | at(name.size() / 2) << 16 | at(name.size() - 1) << 24;
  // Of the usual multipliers the one that best tells the names apart that a window has from those that it may have.
  return static_cast<std::uint8_t>((mixed * 2246822519U) >> 24);
}

}  // namespace json
