// SPDX-License-Identifier: Apache-2.0
// Random documents, read and written at random: a document must answer as a plain tree does that is walked from its
// root for each path, whatever was read or written before.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "NetLink/RapidJsonProto.h"

namespace {

struct Node {
  enum Kind { kNull, kBool, kInt, kText, kObject, kArray };
  Kind kind = kNull;
  int number = 0;
  std::vector<std::pair<std::string, Node>> members;
  std::vector<Node> elements;

  std::size_t Count() const { return kind == kArray ? elements.size() : kind == kNull ? 0 : 1; }

  Node* Member(const std::string& name) {
    if (kind != kObject) return nullptr;
    for (auto& [key, value] : members) {
      if (key == name) return &value;
    }
    return nullptr;
  }

  std::string Json() const {
    std::string text;
    switch (kind) {
      case kNull:
        return "null";
      case kBool:
        return number ? "true" : "false";
      case kInt:
        return std::to_string(number);
      case kText:
        return "\"" + std::to_string(number) + "\"";
      case kObject:
        for (const auto& [key, value] : members)
          text += (text.empty() ? "" : ",") + ("\"" + key + "\":") + value.Json();
        return "{" + text + "}";
      case kArray:
        for (const Node& value : elements) text += (text.empty() ? "" : ",") + value.Json();
        return "[" + text + "]";
    }
    return text;
  }
};

struct Step {
  std::string name;
  std::optional<std::size_t> index;
};
using Path = std::vector<Step>;

std::string TextOf(const Path& path) {
  std::string text;
  for (const Step& step : path) {
    text += "/" + step.name;
    if (step.index) text += "[" + std::to_string(*step.index) + "]";
  }
  return text;
}

Node* Element(Node& node, const Step& step) {
  if (!step.index) return &node;
  if (node.kind != Node::kArray) return *step.index == 1 ? &node : nullptr;
  return *step.index >= 1 && *step.index <= node.elements.size() ? &node.elements[*step.index - 1] : nullptr;
}

Node* Walk(Node& root, const Path& path) {
  Node* node = &root;
  for (const Step& step : path) {
    Node* const member = step.name.empty() ? nullptr : node->Member(step.name);
    node = member ? Element(*member, step) : nullptr;
    if (!node) return nullptr;
  }
  return path.empty() ? nullptr : node;
}

// Writes into a copy, which counts only when the whole path was usable.
void Write(Node& root, const Path& path, int number) {
  if (path.empty()) return;
  Node copy = root;
  Node* node = &copy;
  for (const Step& step : path) {
    if (step.name.empty() || (step.index && *step.index == 0)) return;
    if (node->kind != Node::kObject) *node = Node{Node::kObject, 0, {}, {}};
    Node* member = node->Member(step.name);
    if (!member) {
      node->members.emplace_back(step.name, Node{step.index ? Node::kArray : Node::kObject, 0, {}, {}});
      member = &node->members.back().second;
    }
    if (step.index && !Element(*member, step)) {
      if (*step.index != member->Count() + 1) return;
      if (member->kind != Node::kArray) *member = Node{Node::kArray, 0, {}, {Node(*member)}};
      member->elements.push_back(Node{Node::kObject, 0, {}, {}});
    }
    node = Element(*member, step);
  }
  *node = Node{Node::kInt, number, {}, {}};
  root = std::move(copy);
}

class RandomDocuments : public testing::TestWithParam<unsigned int> {
 protected:
  std::size_t Below(std::size_t limit) { return m_random() % limit; }

  // Few names, so that duplicates and hits are frequent; two of them alike in length, first and last letter.
  std::string Name() {
    static const std::string names[] = {"a", "b", "abcd", "aXcd", "acbd", "Xtop", "Ytop", ""};
    return names[Below(40) == 0 ? 7 : Below(7)];
  }

  Node Tree(int depth) {
    Node node;
    node.kind = static_cast<Node::Kind>(depth > 0 && Below(4) != 0 ? Node::kObject + Below(2) : Below(4));
    node.number = static_cast<int>(Below(2));
    const std::size_t size = Below(6);
    for (std::size_t i = 0; i < size && node.kind == Node::kObject; ++i)
      node.members.emplace_back(Name(), Tree(depth - 1));
    for (std::size_t i = 0; i < size && node.kind == Node::kArray; ++i) node.elements.push_back(Tree(depth - 1));
    return node;
  }

  // Mostly a neighbour of the path before, as callers read.
  Path NextPath(Path path) {
    while (!path.empty() && Below(3) != 0) path.pop_back();
    while (path.size() < 5 && (path.empty() || Below(2) != 0)) {
      path.push_back({Name(), Below(2) ? std::optional<std::size_t>(Below(4)) : std::nullopt});
    }
    return path;
  }

  static void ExpectSameReads(const NetLink::CRapidJsonProto& document, Node& root, const Path& path) {
    const std::string text = TextOf(path);
    const Node* const node = Walk(root, path);
    const bool number = node && (node->kind == Node::kInt || node->kind == Node::kText);
    EXPECT_EQ(document.get_cnt(text), node ? static_cast<int>(node->Count()) : 0) << text;
    EXPECT_EQ(document.get_int_v(text, -7), number ? node->number : -7) << text;
    EXPECT_EQ(document.get_v(text, "-7"), std::to_string(number ? node->number : -7)) << text;
    EXPECT_EQ(document.get_bool_v(text, false), node && node->kind == Node::kBool && node->number) << text;
  }

 private:
  std::mt19937 m_random{GetParam()};
};

TEST_P(RandomDocuments, StayInStepWhileTheyAreWritten) {
  for (int round = 0; round < 25 && !HasFailure(); ++round) {
    Node root = round % 2 ? Tree(4) : Node{Node::kObject, 0, {}, {}};
    NetLink::CRapidJsonProto document;
    ASSERT_TRUE(document.set_str(root.Json()));
    Path path;
    for (int edit = 0; edit < 60 && !HasFailure(); ++edit) {
      path = NextPath(path);
      document.set_v(TextOf(path), edit);
      Write(root, path, edit);
      ASSERT_EQ(document.get_str(0), root.Json()) << TextOf(path);
      for (int read = 0; read < 4; ++read) ExpectSameReads(document, root, path = NextPath(path));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDocuments, testing::Range(1U, 7U));

}  // namespace
