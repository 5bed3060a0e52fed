// SPDX-License-Identifier: Apache-2.0
#include "server/permissions/Audience.h"

#include <algorithm>
#include <charconv>

namespace server {

Sight Audience::Of(int32_t userId) const {
  if (everybody) return Sight::kFull;
  if (users.empty()) return Sight::kNone;
  if (users.front() == userId) return Sight::kFull;
  return std::binary_search(users.begin() + 1, users.end(), userId) ? Sight::kShared : Sight::kNone;
}

std::string Audience::ToText() const {
  if (everybody) return "*";
  std::string text;
  for (int32_t user : users) text += (text.empty() ? "" : ",") + std::to_string(user);
  return text;
}

Audience Audience::FromText(const std::string& text) {
  Audience audience;
  audience.everybody = text == "*";
  const char* at = text.data();
  const char* const end = at + text.size();
  while (!audience.everybody && at < end) {
    int32_t user = 0;
    at = std::from_chars(at, end, user).ptr + 1;
    audience.users.push_back(user);
  }
  return audience;
}

Audience AudienceOf(const Item& item) {
  if (item.userId == kNobody) return {true, {}};
  Audience audience{false, {item.userId}};
  audience.users.insert(audience.users.end(), item.sharedWith.begin(), item.sharedWith.end());
  return audience;
}

Sight SightOf(const Item& item, int32_t userId) {
  if (item.userId == kNobody || item.userId == userId) return Sight::kFull;
  const bool isShared = std::binary_search(item.sharedWith.begin(), item.sharedWith.end(), userId);
  return isShared ? Sight::kShared : Sight::kNone;
}

}  // namespace server
