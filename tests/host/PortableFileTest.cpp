// SPDX-License-Identifier: Apache-2.0
#include "host/PortableFile.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <chrono>
#include <fstream>
#include <regex>

#include "../Cases.h"
#include "ResourceStore/ViewGroupManager.h"
#include "host/Failure.h"
#include "host/ImportPlan.h"
#include "host/JsonText.h"
#include "host/Plugin.h"
#include "host/SavedFile.h"

namespace host {
namespace {

rapidjson::Document Json(const std::string& text) {
  rapidjson::Document document;
  EXPECT_TRUE(ParseJson(text, document)) << text;
  return document;
}

TEST(PortableFileTest, PagesLoseWhatAServerDoesNotKeepAndWindowsKeepWhatTheyUse) {
  for (const auto& [pages, kept] : testing_support::Cases(TABLES "Pages.txt")) {
    EXPECT_EQ(KeepPages(Json(pages), "View"), kept.at(0)) << pages;
  }
}

TEST(PortableFileTest, TheSameContentGivesTheSameBytesAndIsReadBack) {
  PortableFile file;
  file.folders = {{kPublic, {"b"}}, {kPublic, {"a", "c"}}, {kPublic, {"a"}}, {kPublic, {"a"}}};
  file.views = {{{kPublic, {"b"}}, "Gate", 0, 30, "[]"},
                {{kPrivate, {}}, "Überführung \"x\"", 1, -1, "[]"},
                {{kPublic, {"a"}}, "Gate", 0, 30, "[]"}};
  PortableFile shuffled = file;
  std::swap(shuffled.views[0], shuffled.views[2]);
  std::swap(shuffled.folders[0], shuffled.folders[3]);
  const std::string text = WritePortable(file);
  EXPECT_EQ(WritePortable(shuffled), text);
  EXPECT_EQ(text.back(), '\n');

  const PortableFile read = ReadPortable(text);
  EXPECT_EQ(read.folders.size(), 3u);
  EXPECT_EQ(read.views.size(), 3u);
  EXPECT_EQ(WritePortable(read), text);
}

TEST(SavedFileTest, HoldsWhatWasWrittenHoweverShort) {
  const QTemporaryDir folder;
  const std::string name = folder.filePath("saved").toStdString();
  for (const std::string content : {"old", "x", "", "yz"}) {
    SavedFile(name).Write(content);
    std::ifstream file(name, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), content);
  }
}

TEST(PortableFileTest, AWrongFileIsRefusedWithItsPlace) {
  for (const auto& [shortened, expected] : testing_support::Cases(TABLES "Pages.txt")) {
    std::string text = std::regex_replace(shortened, std::regex("^PAGES(.*)"),
                                          R"(VIEW"Name":"n","AutoCycle":0,"RoundTime":0,"PlanPages":$1)");
    text = std::regex_replace(text, std::regex("^VIEW(.*)"),
                              R"(HEAD"Folders":[],"Views":[{"Kind":"public","Path":[],$1}]})");
    text = std::regex_replace(text, std::regex("^HEAD"), R"({"Format":"viewctl-export","Version":1,)");
    try {
      ReadPortable(text);
      ADD_FAILURE() << "read: " << text;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Status(), kUsage);
      EXPECT_NE(std::string(failure.what()).find(expected.at(0)), std::string::npos)
          << failure.what() << " for " << text;
    }
  }
}

TEST(ImportPlanTest, WhatOthersSharedIsNotTheUsersToMatch) {
  const ViewTree tree{{{"-1", "public", kPublic, 0, {}, {}},
                       {"-1", "private", kPrivate, 1, {}, {{"5", "Gate", false}}},
                       {"-1", "shared", kShared, 2, {}, {{"6", "Gate", true}}}}};
  EXPECT_EQ(ExistingIn(tree).views.size(), 1u);
  EXPECT_TRUE(ExistingIn(tree).folders.empty()) << "those of the top need no id";
}

// As when somebody deletes a group between two listings.
TEST(ViewTreeTest, AGroupThatHasGoneIsReadAsEmpty) {
  const ViewTree tree = ReadGroup(Plugin(PLUGIN_LIBRARY), "77777");
  ASSERT_EQ(tree.folders.size(), 1u);
  EXPECT_EQ(tree.folders[0].id, "77777");
  EXPECT_TRUE(tree.folders[0].views.empty());
}

// A group keeps a view that somebody else moved away, and names one that somebody else changed twice.
TEST(ViewTreeTest, AViewStandsOnceWhereItLiesAndViewsOfOneNameByTheirNumbers) {
  const auto list = [](const std::string& kind, const std::string& elements) {
    return R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"Data":{")" + kind + R"(List":{")" + kind + "\":[" +
           elements + "]}}}}";
  };
  const auto view = [](int id, int group, const std::string& name, int method) {
    return R"({"ID":)" + std::to_string(id) + R"(,"Name":")" + name + R"(","ViewGroupID":)" + std::to_string(group) +
           R"(,"UserID":-1,"Method":)" + std::to_string(method) + "}";
  };
  auto& platform = ResourceStore::CViewGroupManager::Instance();
  platform.SetDownloadedData(list("ViewGroup", R"({"ID":1,"Name":"A","UserID":-1},{"ID":2,"Name":"B","UserID":-1})"),
                             list("View", view(10, 1, "same", 0) + "," + view(9, 1, "same", 0) + "," +
                                              view(7, 1, "first", 0) + "," + view(8, 1, "gone", 0)),
                             true);
  {
    const Plugin plugin(PLUGIN_LIBRARY);
    ASSERT_TRUE(plugin.LoadViews(std::chrono::seconds(10)));
    platform.NotifyViewsUpdate(list("View", view(8, 2, "gone", 1) + "," + view(7, 1, "first", 1)));
    std::string response;
    plugin.Ask("GetPlansInGroup", R"({"GroupID":"1"})", response);
    EXPECT_EQ(ListOf(Json(response), "Plans").Size(), 5u) << "one of them twice, one that lies elsewhere";
    const ViewTree tree = ReadGroup(plugin, "1");
    std::string ids;
    for (const TreeView& listed : tree.folders.at(0).views) ids += listed.id + " ";
    EXPECT_EQ(ids, "7 9 10 ");
  }
  platform.Stop();
}

}  // namespace
}  // namespace host
