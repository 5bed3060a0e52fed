// SPDX-License-Identifier: Apache-2.0
#include "server/site/Step.h"

#include "server/documents/Replies.h"
#include "server/permissions/Audience.h"

namespace server {

namespace {

template <class Record>
void Replace(Table<Record>& table, const typename Table<Record>::Ptr& old, typename Table<Record>::Ptr record) {
  record ? table.Put(std::move(record)) : table.Remove(old->id);
}

}  // namespace

void ApplyTo(Catalog& catalog, const Step& step) {
  step.kind == ObjectKind::kView ? Replace(catalog.views, step.oldView, step.newView)
                                 : Replace(catalog.groups, step.oldGroup, step.newGroup);
}

void Revert(Catalog& catalog, const Step& step) {
  step.kind == ObjectKind::kView ? Replace(catalog.views, step.newView, step.oldView)
                                 : Replace(catalog.groups, step.newGroup, step.oldGroup);
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
