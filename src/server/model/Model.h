// SPDX-License-Identifier: Apache-2.0
// The records of the server: view groups and views. They are immutable once they are in the catalog, so that a reader
// may keep them without a lock.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace server {

using Text = std::shared_ptr<const std::string>;

constexpr int32_t kNobody = -1;     // owner of what is public
constexpr int32_t kTopFolder = -1;  // the folder of what lies in no group

constexpr int64_t kMaxChangeNumber = int64_t{1} << 53;  // more is damage

enum class ObjectKind { kGroup = 1, kView = 2 };

// What groups and views have in common.
struct Item {
  int32_t id = 0;  // 0: not given yet
  std::string name;
  int32_t folderId = kTopFolder;
  int32_t userId = kNobody;
  int32_t sequence = 0;
  int64_t changeNumber = 0;         // of its last change
  std::vector<int32_t> sharedWith;  // ascending; views only
  Text head;                        // the element as the owner sees it, up to the document or the closing brace
};

struct Group : Item {
  bool sharedFolder = false;  // counts for a private one only
};

struct View : Item {
  std::string guid;
  int32_t autoCycle = -1;
  int32_t cycleTime = -1;
  int64_t documentId = 0;  // row of `document`; 0: not stored yet
  Text document;           // `,"PlanPages":[...]` and what else the client wrote, ready to follow a head
};

using GroupPtr = std::shared_ptr<const Group>;
using ViewPtr = std::shared_ptr<const View>;

// Who asks. A token that may be used stands for one session.
struct Caller {
  int32_t userId = kNobody;
  int64_t sessionId = 0;  // 0: the server itself
};

}  // namespace server
