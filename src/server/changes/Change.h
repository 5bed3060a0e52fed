// SPDX-License-Identifier: Apache-2.0
// What is remembered of a change of one object.
#pragma once

#include <optional>
#include <string>

#include "server/model/Model.h"
#include "server/permissions/Audience.h"

namespace server {

struct Change {
  int64_t number = 0;
  ObjectKind kind = ObjectKind::kView;
  int32_t id = 0;
  int64_t sessionId = 0;       // the session whose own edit this is; 0: nobody's
  bool contentChanged = true;  // false: only who may see it has changed
  Audience before, after;
  std::string head;        // as the owner sees it; empty once deleted
  std::string sharedHead;  // as others see a shared view
  int64_t documentId = 0;
  Text document;                     // null where there is none
  bool isDocumentUnchecked = false;  // it was read from the store, which may be damaged
};

// What an object's change is to one user, by its number in an event.
enum class Method { kAdded = 0, kChanged = 1, kDeleted = 2 };

// Added is what comes into the user's sight, deleted what goes out of it; nothing: the user hears nothing of the
// change.
std::optional<Method> MethodFor(const Change& change, int32_t userId);

}  // namespace server
