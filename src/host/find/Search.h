// SPDX-License-Identifier: Apache-2.0
// Which views use a resource, over all that the user may see.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/Names.h"
#include "host/Plugin.h"
#include "host/find/Uses.h"

namespace host {

// Which resources are meant: an id, or a name, in which * stands for any characters and ? for one; case does not count.
struct Wanted {
  std::string text;
  std::optional<ResourceType> type;  // of any type where there is none

  bool IsById() const;
};

struct ViewUses {
  Thing view;
  bool isShared = false;  // somebody else's
  std::vector<Use> uses;  // of what is wanted
};

// All views with what they use of it, folder by folder; those that use none are left out. Views that go meanwhile too.
// Names of what is found are fetched. Throws Failure kRefused where they cannot be.
std::vector<ViewUses> FindUses(const Plugin& plugin, const ViewTree& tree, const Wanted& wanted);

// The one resource that is meant: that of the id, or the only one of the name that views use. `wanted` has a type.
// Throws Failure kUsage where there is none of the name, or more than one.
Resource RequireUsed(const Plugin& plugin, const ViewTree& tree, const Wanted& wanted);
// The same of all that the server has; of those that views use where the server lists none of the type.
Resource RequireKnown(const Plugin& plugin, const ViewTree& tree, const Wanted& wanted);

// Reads all views, one after the other. `visit` gets the pages of GetPlanDetail's answer.
void ForEachView(const Plugin& plugin, const ViewTree& tree,
                 const std::function<void(const Thing& view, bool isShared, const rapidjson::Value& detail)>& visit);

}  // namespace host
