// SPDX-License-Identifier: Apache-2.0
// JSON kept as the text it was written in: order, duplicate members and spellings such as 1.0 or \u0041 stay.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Whether `text` is one JSON value in valid UTF-8, blanks around it allowed.
bool IsJson(std::string_view text);

// The text without the blanks between its tokens; blanks inside strings stay.
// REQUIRES: IsJson(text)
std::string WithoutBlanks(std::string_view text);

struct RawMember {
  std::string name;        // unescaped
  std::string_view value;  // part of the text that was split, without blanks around it
};

// The members of an object in the order written, duplicates included. Nothing when `text` is not JSON or not an
// object.
std::optional<std::vector<RawMember>> SplitObject(std::string_view text);

}  // namespace host
