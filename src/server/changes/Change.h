// SPDX-License-Identifier: Apache-2.0
// What is remembered of a change of one object.
#pragma once

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
  Text document;  // null where there is none
};

}  // namespace server
