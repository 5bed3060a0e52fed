// SPDX-License-Identifier: Apache-2.0
#include "host/ImportPlan.h"

#include <gtest/gtest.h>

#include "host/Plugin.h"

namespace host {
namespace {

PortableView View(const Place& folder, const std::string& name) {
  return {folder, name, 0, 0, "[]"};
}

// One line for each step: "make folder public / a", "keep view 5 public / a / Gate".
std::vector<std::string> Steps(const PortableFile& file, const Existing& existing,
                               const std::optional<Place>& into = std::nullopt) {
  std::vector<std::string> lines;
  for (const ImportStep& step : PlanImport(file, existing, into)) {
    const bool folder = step.action == ImportStep::kMakeFolder || step.action == ImportStep::kKeepFolder;
    const bool make = step.action == ImportStep::kMakeFolder || step.action == ImportStep::kMakeView;
    lines.push_back((make ? "make " : "keep ") + std::string(folder ? "folder " : "view ") +
                    (step.id.empty() ? "" : step.id + " ") + PlaceText(step.place) +
                    (folder ? "" : " / " + step.view.name));
  }
  return lines;
}

const Place kA{kPublic, {"a"}};
const Place kAB{kPublic, {"a", "b"}};
const Place kOwn{kPrivate, {}};

using Lines = std::vector<std::string>;

TEST(ImportPlanTest, FoldersComeBeforeWhatTheyHoldEvenUnlistedOnes) {
  const PortableFile file{{kAB}, {View({kShared, {"x", "y"}}, "Gate"), View(kOwn, "Mine")}};
  EXPECT_EQ(Steps(file, {}),
            (Lines{"make folder public / a", "make folder public / a / b", "make folder shared / x",
                   "make folder shared / x / y", "make view shared / x / y / Gate", "make view private / Mine"}));
}

TEST(ImportPlanTest, WhatIsThereIsKeptViewsOfOneNameOneByOne) {
  Existing existing;
  existing.folders = {{kA, "7"}, {{kPrivate, {"a"}}, "8"}};
  existing.views = {{{kA, "Gate"}, {"5", "4"}}, {{kOwn, "Door"}, {"6"}}};
  const PortableView gate = View(kA, "Gate");
  const PortableFile file{{}, {gate, View(kA, "Door"), View(kOwn, "Gate"), gate, gate}};
  EXPECT_EQ(Steps(file, existing),
            (Lines{"keep folder 7 public / a", "keep view 5 public / a / Gate", "make view public / a / Door",
                   "make view private / Gate", "keep view 4 public / a / Gate", "make view public / a / Gate"}));
}

TEST(ImportPlanTest, EverythingGoesIntoTheNamedGroupWhateverItsKind) {
  Existing existing;
  const Place target{kPrivate, {"copy", "here"}};
  existing.folders = {{{kPrivate, {"copy"}}, "1"}, {target, "2"}, {kA, "3"}, {{kPrivate, {"copy", "here", "a"}}, "4"}};
  const PortableFile file{{kAB}, {View(kA, "Gate"), View({kPublic, {}}, "Loose"), View({kShared, {"x"}}, "New")}};
  EXPECT_EQ(Steps(file, existing, target),
            (Lines{"keep folder 4 private / copy / here / a", "make folder private / copy / here / a / b",
                   "make folder private / copy / here / x", "make view private / copy / here / a / Gate",
                   "make view private / copy / here / Loose", "make view private / copy / here / x / New"}));
}

TEST(ImportPlanTest, WhatOthersSharedIsNotTheUsersToMatch) {
  ViewTree tree;
  for (const Kind kind : {kPublic, kPrivate, kShared}) {
    tree.folders.push_back({"-1", "", kind, tree.folders.size(), {}, {}});
  }
  tree.folders[1].views = {{"5", "Gate", false}};
  tree.folders[2].views = {{"6", "Gate", true}};
  tree.folders.push_back({"9", "x", kShared, 2, {}, {{"7", "Gate", false}}});
  const Existing existing = ExistingIn(tree);
  EXPECT_EQ(existing.folders, (std::map<Place, std::string>{{{kShared, {"x"}}, "9"}}));
  EXPECT_EQ(existing.views.size(), 2u);
  EXPECT_EQ(existing.views.count({{kShared, {}}, "Gate"}), 0u);
}

// As when somebody deletes a group between two listings.
TEST(ViewTreeTest, AGroupThatHasGoneIsReadAsEmpty) {
  const ViewTree tree = ReadGroup(Plugin(PLUGIN_LIBRARY), "77777");
  ASSERT_EQ(tree.folders.size(), 1u);
  EXPECT_EQ(tree.folders[0].id, "77777");
  EXPECT_TRUE(tree.folders[0].views.empty());
}

}  // namespace
}  // namespace host
