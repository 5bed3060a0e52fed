// SPDX-License-Identifier: Apache-2.0
// A command line that is being typed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

// The words of a shell's line, quotes and backslashes taken away; the last is the one that is being typed, empty behind
// a blank. The program's name is the first.
std::vector<std::string> SplitLine(std::string_view line);

// Whether a shell's line can hold it.
bool CanBeTyped(std::string_view text);

// What may stand in a word's place, and what to say of it. Empty where there is nothing to say.
struct Candidate {
  std::string text;
  std::string about;
};

// Where names of files are wanted, which the shell knows.
inline constexpr const char* kFiles = ":files";

}  // namespace host
