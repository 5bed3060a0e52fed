// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "host/ViewTree.h"
#include "host/complete/Line.h"

namespace host {

enum class PathsOf { kViews, kFolders, kBoth };

// The paths that begin with the text, one level at a time: a folder ends with a slash, and is there for what lies in it
// where only views are wanted.
std::vector<Candidate> PathsBeginning(const ViewTree& tree, const std::string& text, PathsOf wanted);

}  // namespace host
