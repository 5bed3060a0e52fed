// SPDX-License-Identifier: Apache-2.0
// Where something is to be put, or made.
#pragma once

#include <string>
#include <vector>

#include "host/Names.h"

namespace host {

// How far a path leads through folders that are there, and the names that are left of it.
struct Destination {
  size_t folder = 0;
  std::vector<std::string> rest;
};

// The way of a path from the top, which is the public one unless the path names another. Throws Failure kUsage where it
// is empty, or where two folders of one name stand in its way.
Destination Follow(const ViewTree& tree, const std::string& path);

// The folder that the text names, or, where it names none, the one that a new name is wanted in.
Destination FindDestination(const ViewTree& tree, const std::string& text);

// "; viewctl mkdir makes one", to be said of the first of the names that are left; with the near one, where there is
// one.
std::string AdviceOnMissing(const ViewTree& tree, const Destination& place);

// The view of that name in the folder; null where there is none.
const TreeView* ViewNamed(const ViewTree& tree, size_t folder, const std::string& name);

// Whether what lies in the folder belongs to nobody, as against to its user.
bool IsPublic(const ViewTree& tree, size_t folder);

}  // namespace host
