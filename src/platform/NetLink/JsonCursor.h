// SPDX-License-Identifier: Apache-2.0
// Finds and makes the values that paths address. Internal to the library.
#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "json/MemberFinder.h"

namespace NetLink {

// Elements of an array; 0 for null, 1 for anything else.
rapidjson::SizeType CountOf(const rapidjson::Value& value);

// A position in one document: the objects on the way to the last path. A path that shares its beginning with the
// last one is followed from where the two part.
class JsonCursor {
 public:
  using Value = rapidjson::Value;
  using Allocator = rapidjson::Document::AllocatorType;

  // Starts at `root`, which must outlive the cursor or its next Reset. To be called whenever the document is changed
  // by anything but Make.
  void Reset(Value& root);

  // The value at `path`, or null when it is absent.
  const Value* Find(std::string_view path);

  // The value at `path`, made, with all that is missing on the way, where there was none. Null, and the document
  // untouched, when the path is not usable.
  Value* Make(std::string_view path, Allocator& allocator);

 private:
  // An object on the way; m_path[0, end) addresses it.
  struct Level {
    Level(Value& value, std::size_t pathEnd) : members(&value), end(pathEnd) {}
    json::MemberFinder<Value> members;
    std::size_t end;
  };

  void ReturnToSharedLevel(std::string_view path);
  void Enter(Value& value, std::string_view path, std::size_t end);
  bool IsUsable(std::string_view path);

  std::string m_path;
  std::vector<Level> m_levels;  // Never empty after Reset: the first is the root.
};

}  // namespace NetLink
