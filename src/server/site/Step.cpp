// SPDX-License-Identifier: Apache-2.0
#include "server/site/Step.h"

#include "server/documents/Replies.h"
#include "server/permissions/Audience.h"

namespace server {

void ApplyTo(Catalog& catalog, const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    if (step.newView) {
      catalog.Put(step.newView);
    } else if (step.oldView) {
      catalog.RemoveView(step.oldView->id);
    } else if (step.newGroup) {
      catalog.Put(step.newGroup);
    } else {
      catalog.RemoveGroup(step.oldGroup->id);
    }
  }
}

Change ChangeOf(const Step& step, int64_t number, const Caller& caller, Accounts& accounts) {
  Change change;
  change.number = number;
  change.kind = step.kind;
  change.sessionId = step.own ? caller.sessionId : 0;
  change.contentChanged = step.contentChanged;
  if (step.oldView) {
    change.id = step.oldView->id;
    change.before = AudienceOf(*step.oldView);
  }
  if (step.newView) {
    const View& view = *step.newView;
    change.id = view.id;
    change.after = AudienceOf(view);
    change.head = *view.head;
    if (!view.sharedWith.empty()) change.sharedHead = SharedViewHead(view, accounts.UserName(view.userId));
    change.documentId = view.documentId;
    change.document = view.document;
  }
  if (step.oldGroup) {
    change.id = step.oldGroup->id;
    change.before = AudienceOf(*step.oldGroup);
  }
  if (step.newGroup) {
    change.id = step.newGroup->id;
    change.after = AudienceOf(*step.newGroup);
    change.head = *step.newGroup->head;
  }
  return change;
}

void Assign(View& view, ViewInput input) {
  view.name = std::move(input.name);
  view.groupId = input.groupId;
  view.autoCycle = input.autoCycle;
  view.cycleTime = input.cycleTime;
  view.document = std::make_shared<std::string>(std::move(input.document));
  view.documentId = 0;
}

}  // namespace server
