// SPDX-License-Identifier: Apache-2.0
#include "host/edit/Destination.h"

#include <algorithm>

#include "host/Failure.h"
#include "host/Ids.h"
#include "host/Suggestion.h"

namespace host {
namespace {

// Takes the name of a top-level folder off the path, if it begins with one.
size_t TakeTop(const ViewTree& tree, std::vector<std::string>& names) {
  for (size_t top = 0; top < tree.folders.size() && tree.folders[top].parent == top; ++top) {
    if (names[0] != kKindNames.at(tree.folders[top].kind) && names[0] != tree.folders[top].name) continue;
    names.erase(names.begin());
    return top;
  }
  return 0;
}

}  // namespace

Destination Follow(const ViewTree& tree, const std::string& path) {
  std::vector<std::string> names = SplitPath(path);
  if (names.empty()) throw Failure(kUsage, "The path is empty: is a variable not set?");
  Destination place;
  place.folder = TakeTop(tree, names);
  size_t next = 0;
  for (; next < names.size(); ++next) {
    const auto& inside = tree.folders[place.folder].folders;
    const auto fits = [&](size_t folder) { return tree.folders[folder].name == names[next]; };
    const auto found = std::ranges::find_if(inside, fits);
    if (found == inside.end()) break;
    if (std::ranges::count_if(inside, fits) > 1) {
      throw Failure(kUsage, "There are several folders " + PathText(tree, *found) + ": name one by its id");
    }
    place.folder = *found;
  }
  place.rest.assign(names.begin() + static_cast<std::ptrdiff_t>(next), names.end());
  return place;
}

Destination FindDestination(const ViewTree& tree, const std::string& text) {
  const bool isById = IsId(text) || text.starts_with("group:") || text.starts_with("folder:");
  if (isById) return {Names(tree).Folder(text).folder, {}};
  Destination place = Follow(tree, text);
  if (place.rest.size() > 1 || (place.rest.size() == 1 && text.ends_with('/'))) {
    throw Failure(kUsage, "There is no folder " + PathText(tree, place.folder) + "/" + EscapedName(place.rest[0]) +
                              AdviceOnMissing(tree, place));
  }
  return place;
}

std::string AdviceOnMissing(const ViewTree& tree, const Destination& place) {
  std::vector<std::string> names;
  for (const size_t below : tree.folders[place.folder].folders) names.push_back(tree.folders[below].name);
  const std::string nearest = Nearest(place.rest[0], names);
  if (nearest.empty()) return "; viewctl mkdir makes one";
  return "; did you mean " + PathText(tree, place.folder) + "/" + EscapedName(nearest) + "? (viewctl mkdir makes one)";
}

const TreeView* ViewNamed(const ViewTree& tree, size_t folder, const std::string& name) {
  const std::vector<TreeView>& views = tree.folders[folder].views;
  const auto found =
      std::ranges::find_if(views, [&](const TreeView& view) { return view.name == name && !view.sharedWithUser; });
  return found == views.end() ? nullptr : &*found;
}

bool IsPublic(const ViewTree& tree, size_t folder) {
  return tree.folders[folder].kind == kPublic;
}

}  // namespace host
