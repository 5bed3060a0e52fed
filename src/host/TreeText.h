// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/ViewTree.h"

namespace host {

// The tree for people: one line for each folder and view, names safe to print. `withCounts` adds to each folder how
// much lies in it, all below it included.
std::string DescribeTree(const ViewTree& tree, bool withCounts = false);

// The tree as one line of JSON: an array of the top-level folders, each
// {"ID","Name","Type","Folders":[...],"Views":[{"ID","Name","Shared"}]}, folders alike at any depth.
std::string TreeJson(const ViewTree& tree);

}  // namespace host
