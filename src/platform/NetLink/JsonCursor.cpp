// SPDX-License-Identifier: Apache-2.0
#include "NetLink/JsonCursor.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "json/Numbers.h"

namespace NetLink {
namespace {

using Value = JsonCursor::Value;
using Allocator = JsonCursor::Allocator;

// One step of a path "/Name/Name[n]/Name".
struct PathSegment {
  std::string_view name;
  std::uint64_t index = 0;  // From 1; 0 when the segment has none.
  std::size_t end = 0;      // Offset behind the segment, in the path.
};

// Reads the segment whose '/' stands at `begin`, within the path; false when it cannot name anything (no '/', no name,
// or an index that is 0 or no number), and then `segment` is undefined.
bool ReadSegment(std::string_view path, std::size_t begin, PathSegment& segment) {
  if (path[begin] != '/') return false;
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

std::size_t SharedLength(std::string_view left, std::string_view right) {
  const std::size_t size = std::min(left.size(), right.size());
  std::size_t shared = 0;
  // Paths are long and mostly equal: a word at a time as far as that goes.
  for (std::uint64_t one, other; shared + sizeof one <= size; shared += sizeof one) {
    std::memcpy(&one, left.data() + shared, sizeof one);
    std::memcpy(&other, right.data() + shared, sizeof other);
    if (one != other) break;
  }
  while (shared < size && left[shared] == right[shared]) ++shared;
  return shared;
}

// What the segment's index addresses in the value of its name, or null.
Value* Element(Value& value, std::uint64_t index) {
  if (index == 0) return &value;
  if (!value.IsArray()) return index == 1 ? &value : nullptr;
  return index <= value.Size() ? &value[static_cast<rapidjson::SizeType>(index - 1)] : nullptr;
}

Value& MakeMember(json::MemberFinder<Value>& members, std::string_view name, bool asArray, Allocator& allocator) {
  if (Value* const existing = members.Find(name)) return *existing;
  Value& object = *members.Get();
  object.AddMember(Value(name.data(), static_cast<rapidjson::SizeType>(name.size()), allocator),
                   Value(asArray ? rapidjson::kArrayType : rapidjson::kObjectType), allocator);
  return (object.MemberEnd() - 1)->value;
}

// REQUIRES: index <= CountOf(value) + 1, or 1.
Value& MakeElement(Value& value, std::uint64_t index, Allocator& allocator) {
  if (Value* const existing = Element(value, index)) return *existing;
  if (!value.IsArray()) {
    Value alone;
    alone.Swap(value);
    value.SetArray().PushBack(alone, allocator);
  }
  value.PushBack(Value(rapidjson::kObjectType), allocator);
  return value[value.Size() - 1];
}

}  // namespace

rapidjson::SizeType CountOf(const Value& value) {
  if (value.IsArray()) return value.Size();
  return value.IsNull() ? 0 : 1;
}

void JsonCursor::Reset(Value& root) {
  m_path.clear();
  m_levels.clear();
  m_levels.emplace_back(root, 0);
}

const Value* JsonCursor::Find(std::string_view path) {
  if (path.empty()) return nullptr;
  ReturnToSharedLevel(path);
  Value* value = m_levels.back().members.Get();
  PathSegment segment;
  for (std::size_t position = m_levels.back().end; position < path.size(); position = segment.end) {
    if (!value->IsObject() || !ReadSegment(path, position, segment)) return nullptr;
    Value* const member = m_levels.back().members.Find(segment.name);
    value = member ? Element(*member, segment.index) : nullptr;
    if (!value) return nullptr;
    if (value->IsObject()) Enter(*value, path, segment.end);
  }
  return value;
}

Value* JsonCursor::Make(std::string_view path, Allocator& allocator) {
  if (path.empty()) return nullptr;
  ReturnToSharedLevel(path);
  // What is written may be of another kind than what stood there: it is no level to come back to.
  if (m_levels.back().end == path.size()) m_levels.pop_back();
  if (!IsUsable(path)) return nullptr;
  Value* value = m_levels.back().members.Get();
  PathSegment segment;
  for (std::size_t position = m_levels.back().end; position < path.size(); position = segment.end) {
    ReadSegment(path, position, segment);
    if (!value->IsObject()) value->SetObject();
    if (position > m_levels.back().end) Enter(*value, path, position);
    Value& member = MakeMember(m_levels.back().members, segment.name, segment.index != 0, allocator);
    value = &MakeElement(member, segment.index, allocator);
  }
  return value;
}

// Drops the levels that are not on the way of `path`.
void JsonCursor::ReturnToSharedLevel(std::string_view path) {
  const auto isOnTheWay = [path](const Level& level) { return level.end == path.size() || path[level.end] == '/'; };
  const std::size_t deepest = m_levels.back().end;
  if (deepest <= path.size() && isOnTheWay(m_levels.back()) && std::memcmp(m_path.data(), path.data(), deepest) == 0) {
    return;
  }
  const std::size_t shared = SharedLength(m_path, path);
  while (m_levels.size() > 1 && (m_levels.back().end > shared || !isOnTheWay(m_levels.back()))) m_levels.pop_back();
}

void JsonCursor::Enter(Value& value, std::string_view path, std::size_t end) {
  const std::size_t known = m_levels.back().end;
  m_path.resize(known);
  m_path.append(path.substr(known, end - known));
  m_levels.emplace_back(value, end);
}

// Whether every segment from the last level on can be written: an index may exceed the present count by one.
bool JsonCursor::IsUsable(std::string_view path) {
  Value* value = nullptr;
  PathSegment segment;
  for (std::size_t position = m_levels.back().end; position < path.size(); position = segment.end) {
    if (!ReadSegment(path, position, segment)) return false;
    Value* member = nullptr;
    if (position == m_levels.back().end) {
      member = m_levels.back().members.Find(segment.name);
    } else if (value) {
      member = json::MemberFinder(value).Find(segment.name);
    }
    const std::uint64_t count = member ? CountOf(*member) : 0;
    if (segment.index > count + 1) return false;
    value = member ? Element(*member, segment.index) : nullptr;
  }
  return true;
}

}  // namespace NetLink
