// SPDX-License-Identifier: Apache-2.0
// One step of a path "/Name/Name[n]/Name". Internal to the library.
#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

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
  std::size_t nameEnd = std::string_view::npos;
  std::size_t end = begin + 1;
  for (; end < path.size() && path[end] != '/'; ++end) {
    if (path[end] == '[' && nameEnd == std::string_view::npos) nameEnd = end;
  }
  segment.end = end;
  segment.index = 0;
  if (nameEnd == std::string_view::npos) {
    segment.name = path.substr(begin + 1, end - begin - 1);
    return !segment.name.empty();
  }
  segment.name = path.substr(begin + 1, nameEnd - begin - 1);
  const char* const last = path.data() + end - 1;
  const auto [stop, error] = std::from_chars(path.data() + nameEnd + 1, last, segment.index);
  return !segment.name.empty() && *last == ']' && error == std::errc{} && stop == last && segment.index != 0;
}

}  // namespace NetLink
