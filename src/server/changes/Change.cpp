// SPDX-License-Identifier: Apache-2.0
#include "server/changes/Change.h"

namespace server {

std::optional<Method> MethodFor(const Change& change, int32_t userId) {
  const Sight before = change.before.Of(userId);
  const Sight after = change.after.Of(userId);
  if (before == Sight::kNone && after == Sight::kNone) return std::nullopt;
  if (after == Sight::kNone) return Method::kDeleted;
  if (before == Sight::kNone) return Method::kAdded;
  if (before == after && !change.contentChanged) return std::nullopt;
  return Method::kChanged;
}

}  // namespace server
