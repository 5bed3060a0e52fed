// SPDX-License-Identifier: Apache-2.0
// What the values of options are checked with, in words that say what is wanted.
#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <climits>
#include <string>
#include <vector>

namespace host {

inline CLI::Validator WholeNumber(int least = INT_MIN, int most = INT_MAX) {
  const auto check = [least, most](const std::string& text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (isNumber && number >= least && number <= most) return std::string();
    const std::string range =
        least == INT_MIN ? " of 32 bits" : " from " + std::to_string(least) + " to " + std::to_string(most);
    return "\"" + text + "\" is no whole number" + range;
  };
  return {check, ""};
}

inline CLI::Validator OneOf(const std::vector<std::string>& words) {
  const std::string list = CLI::detail::join(words, ", ");
  const auto check = [words, list](const std::string& text) {
    const bool isOne = std::find(words.begin(), words.end(), text) != words.end();
    return isOne ? std::string() : "\"" + text + "\" is none of " + list;
  };
  return {check, ""};
}

}  // namespace host
