// SPDX-License-Identifier: Apache-2.0
#include "host/Suggestion.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace host {
namespace {

bool IsSame(char left, char right) {
  return std::tolower(static_cast<unsigned char>(left)) == std::tolower(static_cast<unsigned char>(right));
}

// How many letters have to be put in, left out, changed or swapped with their neighbour, case aside.
size_t Distance(std::string_view left, std::string_view right) {
  std::vector<size_t> before(right.size() + 1), last(right.size() + 1), row(right.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= left.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= right.size(); ++j) {
      const size_t changed = last[j - 1] + (IsSame(left[i - 1], right[j - 1]) ? 0 : 1);
      row[j] = std::min({changed, last[j] + 1, row[j - 1] + 1});
      const bool isSwapped = i > 1 && j > 1 && IsSame(left[i - 1], right[j - 2]) && IsSame(left[i - 2], right[j - 1]);
      if (isSwapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last[right.size()];
}

}  // namespace

std::string Nearest(std::string_view text, const std::vector<std::string>& candidates) {
  const std::string* nearest = nullptr;
  size_t least = std::max<size_t>(1, text.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const size_t distance = Distance(text, candidate);
    if (distance >= least) continue;
    least = distance;
    nearest = &candidate;
  }
  return nearest ? *nearest : "";
}

std::string Suggestion(std::string_view text, const std::vector<std::string>& candidates, std::string_view quote) {
  const std::string nearest = Nearest(text, candidates);
  return nearest.empty() ? "" : "; did you mean " + std::string(quote) + nearest + std::string(quote) + "?";
}

}  // namespace host
