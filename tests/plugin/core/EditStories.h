// SPDX-License-Identifier: Apache-2.0
// Stories of one object's edits, and the server at which they are made.
#pragma once

#include <functional>
#include <optional>

#include "CoreFixture.h"

namespace core_test {

using QorviViewPlugin::ChangeNumber;

constexpr unsigned int kId = 9;

enum class Kind { Add, Update, Move, Delete };
struct Op {
  bool isOwn;
  Kind kind;
};
using Story = std::vector<Op>;

inline std::string Text(const Story& story) {
  std::string text;
  for (const Op& op : story) {
    text += op.isOwn ? "own " : "their ";
    text += std::vector<std::string>{"add", "update", "move", "delete"}[static_cast<size_t>(op.kind)] + ", ";
  }
  return text;
}

// Every story of one object that exists, or does not yet: added first, deleted last, changed in between.
inline std::vector<Story> Stories(bool exists, size_t length, bool isGroup) {
  std::vector<Story> stories;
  Story story;
  const std::function<void(bool, bool)> extend = [&](bool isThere, bool wasThere) {
    if (story.size() == length) {
      stories.push_back(story);
      return;
    }
    for (const bool isOwn : {true, false}) {
      for (const Kind kind : {Kind::Add, Kind::Update, Kind::Move, Kind::Delete}) {
        if ((kind == Kind::Add) == wasThere || (kind != Kind::Add && !isThere)) continue;
        if (isGroup && isOwn && kind == Kind::Move) continue;  // the library moves no groups
        story.push_back({isOwn, kind});
        extend(kind != Kind::Delete, true);
        story.pop_back();
      }
    }
  };
  extend(exists, exists);
  return stories;
}

struct Object {
  std::string name;
  unsigned int folder = 1;
  ChangeNumber number = 0;
};
struct Commit {
  Op op;
  ChangeNumber number;
  std::optional<Object> after;
};

class Server {
 public:
  Server(const Story& story, bool exists, bool isGroup) : m_isGroup(isGroup) {
    std::optional<Object> object;
    if (exists) object = Object{"base", 1, 3};
    m_states.push_back(object);
    ChangeNumber number = kFirst;
    for (const Op& op : story) {
      ++number;
      if (op.kind == Kind::Delete) object.reset();
      if (op.kind == Kind::Add) object = Object{};
      if (op.kind == Kind::Add || op.kind == Kind::Update) object->name = "name " + std::to_string(number);
      if (op.kind == Kind::Move) object->folder = 3 - object->folder;
      if (object) object->number = number;
      commits.push_back({op, number, object});
      m_states.push_back(object);
    }
  }

  // The list after so many commits.
  std::string List(bool ofGroups, size_t after) const {
    std::string elements = ofGroups ? GroupElement(1, "one", -1, 1) + "}," + GroupElement(2, "two", -1, 2) + "}"
                                    : ViewElement(8, "eight", 1, 3) + "}";
    if (m_states[after] && ofGroups == m_isGroup) elements += "," + Element(*m_states[after]) + "}";
    return Numbered(kFirst + after, ofGroups ? GroupsDocument(elements) : ViewsDocument(elements));
  }
  std::string Event(const Commit& commit) const {
    const std::string element = commit.after ? Element(*commit.after) : R"({"ID":9)" + Number(commit.number);
    const int method = commit.op.kind == Kind::Add ? 0 : commit.op.kind == Kind::Delete ? 2 : 1;
    const std::string elements = element + R"(,"Method":)" + std::to_string(method) + "}";
    return m_isGroup ? GroupsDocument(elements) : ViewsDocument(elements);
  }
  std::string Answer(const Commit& commit) const {
    const bool isAdd = commit.op.kind == Kind::Add;
    const std::string id = !isAdd ? R"("Other":0)" : m_isGroup ? R"("ViewGroup":{"ID":9})" : R"("View":{"ID":9})";
    return Accepted("{" + id + Number(commit.number) + "}");
  }
  const std::optional<Object>& Last() const { return m_states.back(); }

  static constexpr ChangeNumber kFirst = 10;
  std::vector<Commit> commits;

 private:
  std::string Element(const Object& object) const {
    return (m_isGroup ? GroupElement : ViewElement)(kId, object.name, static_cast<int>(object.folder), object.number);
  }

  bool m_isGroup;
  std::vector<std::optional<Object>> m_states;  // after so many commits
};

}  // namespace core_test
