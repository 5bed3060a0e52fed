// SPDX-License-Identifier: Apache-2.0
// Who may do what to which view or group, and what may lie where. Pure functions over a catalog; they throw a Refusal
// and change nothing. What a user may not see does not exist for them.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "server/model/Catalog.h"

namespace server {

ViewPtr VisibleView(const Catalog& catalog, int32_t userId, int32_t viewId);
// A view shared with the user is seen, but not theirs to edit.
ViewPtr EditableView(const Catalog& catalog, int32_t userId, int32_t viewId);
GroupPtr EditableGroup(const Catalog& catalog, int32_t userId, int32_t groupId);

// New things are public or their maker's own.
void CheckOwner(int32_t userId, int32_t owner);
// A folder's content has the folder's owner.
void CheckFolder(const Catalog& catalog, int32_t userId, int32_t folderId, int32_t owner);
// A folder and all that it lies in; none of them can be moved into it, for a group never lies in itself.
std::set<int32_t> WayToTop(const Catalog& catalog, int32_t folderId);
// 1 to 256 code points, no control characters.
// REQUIRES: valid UTF-8
void CheckName(const std::string& name);

// Everything in a group and the group itself, in the order in which it goes: views before groups, deepest first.
struct Deletion {
  std::vector<int32_t> views;
  std::vector<int32_t> groups;
};
Deletion PlanDeletion(const Catalog& catalog, const Group& group);

// Throws unless everything in the catalog may lie where it lies. For a catalog that was put together from a file.
void CheckContainment(const Catalog& catalog);

}  // namespace server
