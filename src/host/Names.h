// SPDX-License-Identifier: Apache-2.0
// How every command is told which view or folder is meant:
//
//     110                              an id, where it is not both a view's and a folder's
//     view:110, group:1                an id of that kind; so may be a path
//     Station/Platforms/Platform 2     names from the top down, "\/" for a slash within one, "/" at the end for a
//     folder private/My rounds                the same below one of the top-level folders, which public, private,
//     shared and
//                                      the folders' own names stand for
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/Failure.h"
#include "host/ViewTree.h"

namespace host {

struct Thing {
  bool isView = false;
  std::string id;     // "-1" for a top-level folder
  size_t folder = 0;  // in the tree: the folder itself, or the one that the view lies in
  std::string name;
};

// A name as it stands in a path.
std::string EscapedName(const std::string& name);
// A path's names, without empty ones.
std::vector<std::string> SplitPath(std::string_view text);
// The path as it may be given to a command, its first name that of the top-level folder.
std::string PathText(FolderKind kind, const std::vector<std::string>& path);
std::string PathText(const ViewTree& tree, size_t folder);
std::string PathText(const ViewTree& tree, const Thing& view);

// Finds things in a tree, which must outlive it. What is not there, or not of the kind that is asked for, throws a
// Failure that says what is there instead: kUsage for a path, kRefused for an id, as it may have been there a moment
// ago.
class Names {
 public:
  explicit Names(const ViewTree& tree) : m_tree(tree) {}

  Thing View(const std::string& text) const;
  // A top-level folder only where `withTop` says so.
  Thing Folder(const std::string& text, bool withTop = false) const;
  Thing Either(const std::string& text, bool withTop = false) const;
  // All that the text may mean. Throws Failure kUsage where it can mean nothing.
  std::vector<Thing> All(const std::string& text) const;

 private:
  enum class Wanted { kView, kFolder, kEither };

  std::vector<Thing> ById(const std::string& id) const;
  std::vector<Thing> ByPath(const std::string& text) const;
  // The path that a slip in one or more of the text's names may have been meant for; empty where none is near.
  std::string NearPath(const std::string& text, Wanted wanted) const;
  std::vector<std::string> NamesIn(const std::string& path, Wanted wanted) const;
  Failure NotThere(const std::string& text, Wanted wanted) const;
  std::vector<size_t> Below(size_t folder, const std::string& name) const;
  void AddContent(size_t folder, const std::string& name, std::vector<Thing>& found) const;
  [[noreturn]] void RefuseSeveral(const std::string& text, const std::vector<Thing>& found) const;

  const ViewTree& m_tree;
};

}  // namespace host
