// SPDX-License-Identifier: Apache-2.0
#include "host/ImportPlan.h"

#include <set>

namespace host {
namespace {

// The place itself and all folders above it, down to the top-level one or the one that everything goes into, which
// are there.
void AddWithParents(Place place, size_t depthThatIsThere, std::set<Place>& folders) {
  while (place.path.size() > depthThatIsThere && folders.insert(place).second) place.path.pop_back();
}

}  // namespace

Place PlaceIn(const std::optional<Place>& into, const Place& place) {
  if (!into) return place;
  Place moved = *into;
  moved.path.insert(moved.path.end(), place.path.begin(), place.path.end());
  return moved;
}

Existing ExistingIn(const ViewTree& tree, std::optional<size_t> part) {
  Existing existing;
  std::vector<bool> counts(tree.folders.size(), !part);
  for (size_t i = 0; i < tree.folders.size(); ++i) {
    const TreeFolder& folder = tree.folders[i];
    if (i == part || counts[folder.parent]) counts[i] = true;
    if (!counts[i]) continue;
    const Place place{folder.kind, tree.PathOf(i)};
    if (folder.parent != i) existing.folders.emplace(place, folder.id);
    for (const TreeView& view : folder.views) {
      if (!view.sharedWithUser) existing.views[{place, view.name}].push_back({view.id, folder.id});
    }
  }
  return existing;
}

std::vector<ImportStep> PlanImport(const PortableFile& file, const Existing& existing,
                                   const std::optional<Place>& into) {
  std::set<Place> folders;
  const size_t depth = into ? into->path.size() : 0;
  for (const Place& folder : file.folders) AddWithParents(PlaceIn(into, folder), depth, folders);
  for (const PortableView& view : file.views) AddWithParents(PlaceIn(into, view.folder), depth, folders);

  std::vector<ImportStep> steps;
  // A path sorts behind its beginnings, so every folder comes before those in it.
  for (const Place& folder : folders) {
    const auto found = existing.folders.find(folder);
    const bool there = found != existing.folders.end();
    steps.push_back(
        {there ? ImportStep::kKeepFolder : ImportStep::kMakeFolder, folder, there ? found->second : "", {}, {}});
  }
  std::map<std::pair<Place, std::string>, size_t> matched;
  for (const PortableView& view : file.views) {
    const std::pair<Place, std::string> key(PlaceIn(into, view.folder), view.name);
    const auto found = existing.views.find(key);
    const size_t nth = matched[key]++;
    if (found != existing.views.end() && nth < found->second.size()) {
      const Existing::View& there = found->second[nth];
      steps.push_back({ImportStep::kKeepView, key.first, there.id, view, there.folderId});
    } else {
      steps.push_back({ImportStep::kMakeView, key.first, "", view, ""});
    }
  }
  return steps;
}

}  // namespace host
