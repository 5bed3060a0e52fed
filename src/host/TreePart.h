// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "host/ViewTree.h"

namespace host {

struct TreeChoices {
  std::optional<size_t> below;  // only this folder and what lies in it
  std::optional<int> depth;     // how many levels below a top one are kept
  std::string name;  // only what fits, and the folders above it; * and ? stand for parts, case does not count
};

// The part of the tree that is asked for; its first folders are the top-level ones, or the one that was chosen.
ViewTree PartOf(const ViewTree& tree, const TreeChoices& choices);

}  // namespace host
