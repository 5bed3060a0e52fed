// SPDX-License-Identifier: Apache-2.0
#include "host/Names.h"

#include <gtest/gtest.h>

#include "../Cases.h"
#include "host/Failure.h"
#include "host/Suggestion.h"

namespace host {
namespace {

// public: North (4) { Roof (5), "In/out" (8), Gate (9) }, twins Twin (10), Twin (11), a view 4; private: Gate (6),
// private (12)
const ViewTree& Tree() {
  static const ViewTree tree{
      {{"-1", "Public views", kPublic, 0, {3}, {{"10", "Twin", false}, {"11", "Twin", false}, {"4", "Four", false}}},
       {"-1", "My views", kPrivate, 1, {}, {{"6", "Gate", false}, {"12", "private", false}}},
       {"-1", "Shared views", kShared, 2, {}, {}},
       {"4", "North", kPublic, 0, {4}, {{"8", "In/out", false}, {"9", "Gate", false}}},
       {"5", "Roof", kPublic, 3, {}, {}}}};
  return tree;
}

// What "view", "folder" or "either" finds of the text behind it: a thing, or why there is none.
std::string Found(const std::string& asked) {
  const size_t blank = asked.find(' ');
  const std::string text = asked.substr(blank + 1);
  const Names names(Tree());
  try {
    if (asked.starts_with("view")) return "view " + names.View(text).id;
    if (asked.starts_with("folder")) return "group " + names.Folder(text).id;
    const Thing thing = names.Either(text, true);
    return (thing.isView ? "view " : "group ") + thing.id;
  } catch (const Failure& failure) {
    return (failure.Status() == kUsage ? "usage: " : "refused: ") + std::string(failure.what());
  }
}

TEST(NamesTest, AThingIsNamedByIdKindOrPathAndAMistakeToldWithWhatIsThere) {
  for (const auto& [asked, expected] : testing_support::Cases(TABLES "Names.txt")) {
    EXPECT_TRUE(Found(asked).starts_with(expected.at(0))) << asked << ": " << Found(asked);
  }
  for (const char* id : {"8", "9", "6"}) {
    const std::string path = PathText(Tree(), Names(Tree()).View(id));
    EXPECT_EQ(Names(Tree()).View(path).id, id) << "a path leads back: " << path;
  }
  // A backslash at the end escapes nothing, whatever lies behind the text.
  EXPECT_EQ(SplitPath(std::string_view("a\\/b").substr(0, 2)), std::vector<std::string>{"a\\"});
}

TEST(NamesTest, OnlyWhatIsNearIsSuggested) {
  const std::vector<std::string> names = {"show", "share", "export", "ResourceID"};
  const std::pair<const char*, const char*> rows[] = {{"shwo", "; did you mean show?"},
                                                      {"exprt", "; did you mean export?"},
                                                      {"resourceid", "; did you mean ResourceID?"},
                                                      {"ResuorceId", "; did you mean ResourceID?"},
                                                      {"shoxx", ""},  // two letters of five
                                                      {"sh", ""},     // two letters too few
                                                      {"nonsense", ""},
                                                      {"", ""}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(Suggestion(text, names), expected) << text;
  // What stands before a text is none of it, and so no neighbour to swap with.
  EXPECT_EQ(Suggestion(std::string_view("ohw").substr(1), names), "");
}

}  // namespace
}  // namespace host
