// SPDX-License-Identifier: Apache-2.0
// What an edit makes of one view or group.
#pragma once

#include <chrono>
#include <memory>
#include <new>
#include <thread>
#include <vector>

#include "server/changes/Change.h"
#include "server/documents/Requests.h"
#include "server/login/Accounts.h"
#include "server/model/Catalog.h"
#include "server/model/Model.h"

namespace server {

// From what the object was to what it becomes; nothing before: new, nothing after: deleted.
struct Step {
  Step(ViewPtr before, std::shared_ptr<View> after)
      : kind(ObjectKind::kView), oldView(std::move(before)), newView(std::move(after)) {}
  Step(GroupPtr before, std::shared_ptr<Group> after)
      : kind(ObjectKind::kGroup), oldGroup(std::move(before)), newGroup(std::move(after)) {}

  const Item* Before() const { return oldView ? static_cast<const Item*>(oldView.get()) : oldGroup.get(); }
  const Item* After() const { return newView ? static_cast<const Item*>(newView.get()) : newGroup.get(); }

  ObjectKind kind;
  bool own = true;             // the caller edited this very object
  bool contentChanged = true;  // not only who may see it
  ViewPtr oldView;
  std::shared_ptr<View> newView;
  GroupPtr oldGroup;
  std::shared_ptr<Group> newGroup;
};

// Where memory does not suffice, std::bad_alloc is thrown and the same call may be made again.
void ApplyTo(Catalog& catalog, const Step& step);
// The reverse, likewise. REQUIRES: it was applied, and what was applied after it is reverted.
void Revert(Catalog& catalog, const Step& step);

// For what must not fail: waits until there is memory.
template <class Action>
void WithMemory(const Action& action) noexcept {
  while (true) {
    try {
      return action();
    } catch (const std::bad_alloc&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
}

// The change that this step is, made by `caller`. REQUIRES: the new view or group has been saved.
Change ChangeOf(const Step& step, int64_t number, const Caller& caller, Accounts& accounts);

// Gives a view what a request or a seed says of it, but for its owner.
void Assign(View& view, ViewInput input);

}  // namespace server
