// SPDX-License-Identifier: Apache-2.0
#include "host/Names.h"

#include <gtest/gtest.h>

#include "host/Failure.h"
#include "host/Suggestion.h"

namespace host {
namespace {

// public: North (4) { Roof (5), "In/out" (8), Gate (9) }, twins Twin (10), Twin (11), a view 4; private: Gate (6)
const ViewTree& Tree() {
  static const ViewTree tree{
      {{"-1", "Public views", kPublic, 0, {3}, {{"10", "Twin", false}, {"11", "Twin", false}, {"4", "Four", false}}},
       {"-1", "My views", kPrivate, 1, {}, {{"6", "Gate", false}}},
       {"-1", "Shared views", kShared, 2, {}, {}},
       {"4", "North", kPublic, 0, {4}, {{"8", "In/out", false}, {"9", "Gate", false}}},
       {"5", "Roof", kPublic, 3, {}, {}}}};
  return tree;
}

std::string Kinded(const Thing& thing) {
  return (thing.isView ? "view " : "group ") + thing.id;
}

TEST(NamesTest, AThingIsNamedByIdKindOrPath) {
  const std::pair<const char*, const char*> rows[] = {
      {"8", "view 8"},
      {"5", "group 5"},
      {"view:4", "view 4"},
      {"group:4", "group 4"},
      {"folder:4", "group 4"},
      {"North", "group 4"},
      {"North/", "group 4"},
      {"/North/Roof", "group 5"},
      {"group:North/Roof", "group 5"},
      {"North/In\\/out", "view 8"},
      {"North/Gate", "view 9"},
      {"Gate", "view 6"},
      {"private/Gate", "view 6"},
      {"My views/Gate", "view 6"},
      {"public/North/Gate", "view 9"},
      {"public", "group -1"},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(Kinded(Names(Tree()).Either(text, true)), expected) << text;
  for (const char* id : {"8", "9", "6"}) {
    const Thing view = Names(Tree()).View(id);
    EXPECT_EQ(Names(Tree()).View(PathText(Tree(), view)).id, id) << "a path leads back: " << PathText(Tree(), view);
  }
}

TEST(NamesTest, WhatIsMeantWronglyIsToldWithWhatIsThere) {
  const auto view = [](const char* text) { Names(Tree()).View(text); };
  const auto folder = [](const char* text) { Names(Tree()).Folder(text); };
  const auto either = [](const char* text) { Names(Tree()).Either(text); };
  const struct {
    void (*find)(const char*);
    const char* text;
    ExitStatus status;
    const char* part;
  } rows[] = {
      {view, "5", kRefused, "5 is a folder; viewctl tree 5 shows it"},
      {view, "North", kRefused, "North is a folder; viewctl tree 4 shows it"},
      {folder, "8", kRefused, "8 is a view; viewctl show 8 shows it"},
      {folder, "public", kUsage, "There is no group \"public\": it takes"},
      {view, "77", kRefused, "There is no view 77; viewctl tree lists"},
      {view, "group:4", kRefused, "group:4 is a folder; viewctl tree 4 shows it"},
      {view, "North/gate", kUsage, "There is no view \"North/gate\"; did you mean \"North/Gate\"? (viewctl tree"},
      {view, "view:Nrth/Gaet", kUsage, "did you mean \"North/Gate\"?"},
      {view, "North/Inn\\/out", kUsage, "did you mean \"North/In\\/out\"?"},
      {view, "North/Rof", kUsage, "There is no view \"North/Rof\": it takes an id or a path"},
      {folder, "North/Rof", kUsage, "There is no group \"North/Rof\"; did you mean \"North/Roof\"?"},
      {folder, "publik/North/Rof", kUsage, "did you mean \"public/North/Roof\"?"},
      {either, "Nowhere/Gate", kUsage, "There is no view or group \"Nowhere/Gate\": it takes an id"},
      {either, "4", kUsage, "4 is a view and a group: say view:4 or group:4"},
      {view, "Twin", kUsage, "\"Twin\" may be any of view:10, view:11: name one of them"},
      {either, "", kUsage, "is empty: is a variable not set?"},
      {view, "view:", kUsage, "is empty"},
      {view, "/", kUsage, "There is no view \"/\""},
  };
  for (const auto& row : rows) {
    try {
      row.find(row.text);
      ADD_FAILURE() << "found: " << row.text;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Status(), row.status) << row.text;
      EXPECT_NE(std::string(failure.what()).find(row.part), std::string::npos) << failure.what();
    }
  }
}

TEST(NamesTest, OnlyWhatIsNearIsSuggested) {
  const std::vector<std::string> names = {"show", "share", "export", "ResourceID"};
  const std::pair<const char*, const char*> rows[] = {{"shwo", "; did you mean show?"},
                                                      {"exprt", "; did you mean export?"},
                                                      {"resourceid", "; did you mean ResourceID?"},
                                                      {"ResuorceId", "; did you mean ResourceID?"},
                                                      {"nonsense", ""},
                                                      {"", ""}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(Suggestion(text, names), expected) << text;
}

}  // namespace
}  // namespace host
