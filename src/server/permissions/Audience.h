// SPDX-License-Identifier: Apache-2.0
// Who may see a view or a group.
#pragma once

#include <string>
#include <vector>

#include "server/model/Model.h"

namespace server {

enum class Sight { kNone, kFull, kShared };

struct Audience {
  bool everybody = false;
  // Unless it is everybody: first the owner, then the others in ascending order. Empty: nobody.
  std::vector<int32_t> users;

  Sight Of(int32_t userId) const;
  std::string ToText() const;  // "*", "" or ids joined by ","
  static Audience FromText(const std::string& text);
};

Audience AudienceOf(const Item& item);
// The same as AudienceOf(item).Of(userId).
Sight SightOf(const Item& item, int32_t userId);

}  // namespace server
