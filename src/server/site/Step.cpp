// SPDX-License-Identifier: Apache-2.0
#include "server/site/Step.h"

#include "server/documents/Replies.h"
#include "server/permissions/Audience.h"

namespace server {

namespace {

void Replace(Catalog& catalog, const ViewPtr& old, ViewPtr view) {
  view ? catalog.Put(std::move(view)) : catalog.RemoveView(old->id);
}

void Replace(Catalog& catalog, const GroupPtr& old, GroupPtr group) {
  group ? catalog.Put(std::move(group)) : catalog.RemoveGroup(old->id);
}

}  // namespace

void ApplyTo(Catalog& catalog, const Step& step) {
  step.kind == Kind::kView ? Replace(catalog, step.oldView, step.newView)
                           : Replace(catalog, step.oldGroup, step.newGroup);
}

void Revert(Catalog& catalog, const Step& step) {
  step.kind == Kind::kView ? Replace(catalog, step.newView, step.oldView)
                           : Replace(catalog, step.newGroup, step.oldGroup);
}

Change ChangeOf(const Step& step, int64_t number, const Caller& caller, Accounts& accounts) {
  Change change;
  change.number = number;
  change.kind = step.kind;
  change.sessionId = step.own ? caller.sessionId : 0;
  change.contentChanged = step.contentChanged;
  change.isDocumentNew = step.isDocumentNew;
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
