// SPDX-License-Identifier: Apache-2.0
// Resources that an export names and the server does not have, or has as another kind.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/ImportPlan.h"
#include "host/find/Uses.h"

namespace host {

struct UnknownUse {
  size_t view = 0;  // index in the file
  Use use;
};

// Asks the server for all that the views use. Kinds that it cannot be asked for count as known. Throws Failure kRefused
// where it does not answer.
std::vector<UnknownUse> FindUnknown(const PortableFile& file);

// `into` is where the file's views are to lie. "public/Station/Forecourt, page 1, window 2: camera 118 "North gate" is
// not on this server".
std::string DescribeUnknown(const PortableFile& file, const UnknownUse& unknown, const std::optional<Place>& into);

// Each of them once.
std::set<Resource> ResourcesOf(const std::vector<UnknownUse>& unknown);

}  // namespace host
