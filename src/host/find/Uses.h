// SPDX-License-Identifier: Apache-2.0
// Where a view uses which resource.
#pragma once

#include <rapidjson/document.h>

#include <map>
#include <string>
#include <vector>

#include "host/Resources.h"

namespace host {

enum class Role {
  kShown,     // the window shows it
  kZoomLink,  // the window shows a zoom window of a window that shows it
  kRelated,   // the window shows it beside its own resource on demand
  kCycle,     // the window cycles through it, among others
};
const char* RoleWord(Role role);

struct Use {
  int page = 0;    // from 1, as show counts them
  int window = 0;  // the window's number within its page
  Role role = Role::kShown;
  Resource resource;
};

// In the order of pages and windows; a resource that a window uses twice in one role counts once. `pages` are those of
// GetPlanDetail's answer.
std::vector<Use> UsesIn(const rapidjson::Value& pages);

// What comes in a resource's place; an empty site leaves the old one. The name is what relations keep of it.
struct Substitute {
  Resource resource;
  std::string site;
  std::string name;
};
using Substitutes = std::map<Resource, Substitute>;

// The pages with other resources wherever those are used, all at once, in the one form of KeepPages; what else a window
// has stays, its preset and its digital zoom included. `places` becomes the number of places that were changed.
std::string WithOtherResources(const rapidjson::Value& pages, const Substitutes& substitutes, size_t& places);

// "preset 3", "fisheye": what a window that shows the resource has set for the camera it shows, and may not fit
// another.
std::vector<std::string> SettingsFor(const rapidjson::Value& pages, const Resource& resource);

}  // namespace host
