// SPDX-License-Identifier: Apache-2.0
// One step of a path "/Name/Name[n]/Name". Internal to the library.
#pragma once

#include <cstdint>
#include <string_view>

#include "json/Numbers.h"

namespace NetLink {

struct PathSegment {
  std::string_view name;
  std::uint64_t index = 0;  // From 1; 0 when the segment has none.
  std::size_t end = 0;      // Offset behind the segment, in the path.
};

// Reads the segment whose '/' stands at `begin`; false when it cannot name anything (no '/', no name, or an index
// that is 0 or no number), and then `segment` is undefined.
inline bool ReadSegment(std::string_view path, std::size_t begin, PathSegment& segment) {
  if (begin >= path.size() || path[begin] != '/') return false;
  const std::string_view rest = path.substr(begin + 1);
  segment.name = rest.substr(0, rest.find('/'));
  segment.end = begin + 1 + segment.name.size();
  segment.index = 0;
  const std::size_t bracket = segment.name.find('[');
  if (bracket == std::string_view::npos) return !segment.name.empty();
  const char* const first = segment.name.data() + bracket + 1;
  const char* const last = segment.name.data() + segment.name.size() - 1;
  segment.name = segment.name.substr(0, bracket);
  if (*last != ']') return false;
  segment.index = json::WholeNumber<std::uint64_t>({first, last}).value_or(0);
  return !segment.name.empty() && segment.index != 0;
}

}  // namespace NetLink
