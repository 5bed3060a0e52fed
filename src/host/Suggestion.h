// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The candidate that the text may be a slip of; empty where none is near.
std::string Nearest(std::string_view text, const std::vector<std::string>& candidates);

// "; did you mean show?" for the candidate that the text may be a slip of; empty where none is near. `quote` stands
// around the candidate.
std::string Suggestion(std::string_view text, const std::vector<std::string>& candidates, std::string_view quote = "");

}  // namespace host
