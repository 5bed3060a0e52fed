// SPDX-License-Identifier: Apache-2.0
// What stands here for the resources of another server. A file that is made with one "To" for each and filled in by
// hand:
//
//   {"Format":"viewctl-map","Version":1,
//    "Resources":[{"Kind":"camera","ID":"118","Name":"North gate","To":"240"}]}
//
// Without "ID" the name says which, as the names in the export do; an empty "To" leaves the resource as it is.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/PortableFile.h"
#include "host/find/Search.h"

namespace host {

struct MapEntry {
  ResourceType type = 0;
  std::string id;
  std::string name;
  std::string to;  // an id, or the name of a resource here
};

std::string WriteMap(const std::vector<MapEntry>& entries);
// Throws Failure kUsage, naming the place, when the text is not such a file.
std::vector<MapEntry> ReadMap(std::string_view text);

// What each of the file's resources becomes. Throws Failure where an entry's name, or what it is to become, is not
// known.
Substitutes ResolveMap(const std::vector<MapEntry>& entries, const PortableFile& file, const Plugin& plugin,
                       const ViewTree& tree);

}  // namespace host
