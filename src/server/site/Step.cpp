// SPDX-License-Identifier: Apache-2.0
#include "server/site/Step.h"

#include "server/documents/Replies.h"
#include "server/permissions/Audience.h"

namespace server {

void ApplyTo(Catalog& catalog, const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    if (step.newView) {
      catalog.views.Put(step.newView);
    } else if (step.oldView) {
      catalog.views.Remove(step.oldView->id);
    } else if (step.newGroup) {
      catalog.groups.Put(step.newGroup);
    } else {
      catalog.groups.Remove(step.oldGroup->id);
    }
  }
}

Change ChangeOf(const Step& step, int64_t number, const Caller& caller, Accounts& accounts) {
  Change change;
  change.number = number;
  change.kind = step.kind;
  change.sessionId = step.own ? caller.sessionId : 0;
  change.contentChanged = step.contentChanged;
  if (const Item* before = step.Before()) {
    change.id = before->id;
    change.before = AudienceOf(*before);
  }
  if (const Item* after = step.After()) {
    change.id = after->id;
    change.after = AudienceOf(*after);
    change.head = *after->head;
  }
  if (step.newView) {
    const View& view = *step.newView;
    if (!view.sharedWith.empty()) change.sharedHead = SharedViewHead(view, accounts.UserName(view.userId));
    change.documentId = view.documentId;
    change.document = view.document;
  }
  return change;
}

void Assign(View& view, ViewInput input) {
  view.name = std::move(input.name);
  view.folderId = input.folderId;
  view.autoCycle = input.autoCycle;
  view.cycleTime = input.cycleTime;
  view.document = std::make_shared<std::string>(std::move(input.document));
  view.documentId = 0;
}

}  // namespace server
