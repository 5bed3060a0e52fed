// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace ResourceData {

// Kinds of resource, as observers and change notices number them. Other values may occur.
enum ResourceType : int {
  ResourceTypeCamera = 1001,
  ResourceTypeView = 16000,
  ResourceTypeViewGroup = 16001,
  ResourceTypeViewReserved = 16002,
};

// Hears of changes to resources. Owned by whoever registers it, who withdraws it before destroying it.
class IResourceObserver {
 public:
  struct Param {
    Param() = default;
    Param(const std::string& resourceId, int state) : id(resourceId), enum_state(state) {}

    std::string id;      // decimal id of the resource that changed
    int enum_state = 0;  // what happened: 2 renamed, 3 child added, 4 child removed, 7 changed
    std::string name;    // the new name, for state 2
    int reserved = 1;
    std::string child_id;                 // decimal id of the child, for states 3 and 4
    int child_type = ResourceTypeCamera;  // the child's kind
    std::string other_change_info;
  };

  // Called on the thread that made the change; may call back into whoever notifies, unless that says otherwise (the
  // library does for the notice that a group went: QorviViewPlugin.h).
  virtual void UpdateResourceInfos(const Param& param) = 0;

 protected:
  ~IResourceObserver() = default;
};

}  // namespace ResourceData
