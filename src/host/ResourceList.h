// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "host/Resources.h"

namespace host {

// What a server has for windows to show, be it shown or not.
struct ListedResource {
  Resource resource;
  std::string name;
  std::string site;  // empty: none
};

// All elements and areas of the server that the process is logged in at, elements first, each by id. The platform gets
// to know the elements too, so that what the library answers afterwards has their names. Throws Failure kRefused when
// the server does not list them.
std::vector<ListedResource> ListResources();

}  // namespace host
