// SPDX-License-Identifier: Apache-2.0
// What an import has to make: the file matched with what the server has, by folder path and name.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/PortableFile.h"

namespace host {

// What is there already.
struct Existing {
  // A folder's id; of several folders at one place the first counts.
  std::map<Place, std::string> folders;
  struct View {
    std::string id;
    std::string folderId;
  };
  // The views that lie at a place under a name, several when the name is used more than once.
  std::map<std::pair<Place, std::string>, std::vector<View>> views;
};

// In the tree, or only in one of its folders, itself included: another one may have its path.
Existing ExistingIn(const ViewTree& tree, std::optional<size_t> part = {});

struct ImportStep {
  enum Action { kMakeFolder, kMakeView, kKeepFolder, kKeepView } action;
  Place place;           // of the folder itself, or of the folder that the view lies in
  std::string id;        // what is there already; empty for what is to be made
  PortableView view;     // for the two that are about a view
  std::string folderId;  // that the view lies in, where it is there
};

// Where something of the file comes to lie.
Place PlaceIn(const std::optional<Place>& into, const Place& place);

// The steps in an order in which they can be carried out: folders first, each before what it holds. A folder or view
// that is there is kept as it is; the n-th view of one name is matched with the n-th of that name, so that an import
// that was interrupted goes on where it ended and a second one makes nothing. `into` puts everything below that folder,
// whatever top-level folder it came from.
std::vector<ImportStep> PlanImport(const PortableFile& file, const Existing& existing,
                                   const std::optional<Place>& into);

}  // namespace host
