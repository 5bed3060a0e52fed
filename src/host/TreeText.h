// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/ViewTree.h"

namespace host {

// The tree for people: one line for each folder and view, names safe to print.
std::string DescribeTree(const ViewTree& tree);

// The tree as one line of JSON: an array of the top-level folders, each
// {"ID","Name","Type","Folders":[...],"Views":[{"ID","Name","Shared"}]}, folders alike at any depth.
std::string TreeJson(const ViewTree& tree);

}  // namespace host
