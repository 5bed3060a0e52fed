// SPDX-License-Identifier: Apache-2.0
// The folders and views as the exchanges list them.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/Plugin.h"

namespace host {

// The numbers of the three top-level folders, which are also the types of what lies in them.
enum FolderKind : int { kPublic = 0, kPrivate = 1, kShared = 2 };
inline constexpr std::array<const char*, 3> kKindNames = {"public", "private", "shared"};

struct TreeView {
  std::string id;
  std::string name;
  bool sharedWithUser = false;  // somebody else's, to be seen only
  std::string note = {};        // what a listing says beside it
};

struct TreeFolder {
  std::string id;  // "-1" for a top-level folder
  std::string name;
  FolderKind kind = kPublic;  // that of the top-level folder it lies in
  size_t parent = 0;          // index of the folder it lies in; its own for a top-level folder
  std::vector<size_t> folders;
  std::vector<TreeView> views;    // sorted by name
  bool hasReplacedBytes = false;  // its name had bytes that are no UTF-8, which read as U+FFFD
};

// What lies in a folder, all below it included.
struct TreeCount {
  size_t folders = 0;
  size_t views = 0;
};

struct ViewTree {
  // The first three are the top-level folders; every folder stands behind the one it lies in, and folders of one
  // parent are sorted by name. A view that a listing names twice stands here once.
  std::vector<TreeFolder> folders;

  // Names from the top-level folder (left out) down to the folder itself.
  std::vector<std::string> PathOf(size_t folder) const;
  TreeCount CountIn(size_t folder) const;
  // Index of the group with this id, or the number of folders when there is none.
  size_t FindFolder(const std::string& id) const;
};

// REQUIRES: the views are loaded. Throws Failure kRefused when a listing fails. A group that somebody else deletes
// meanwhile may stand in the tree without content.
ViewTree ReadViewTree(const Plugin& plugin);
// The same for what lies in one group, which is the first folder, its name and kind left out.
ViewTree ReadGroup(const Plugin& plugin, const std::string& id);

}  // namespace host
