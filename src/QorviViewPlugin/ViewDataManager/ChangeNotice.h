// SPDX-License-Identifier: Apache-2.0
// What observers are told of a change to the cache.
#pragma once

#include "ResourceStore/ResourceObserver.h"

namespace QorviViewPlugin {

using Notice = ResourceData::IResourceObserver::Param;

// What a notice says happened.
enum NoticeState : int { NoticeRenamed = 2, NoticeChildAdded = 3, NoticeChildRemoved = 4, NoticeChanged = 7 };

// For the observers of a group: what became of something in it.
Notice ChildNotice(unsigned int parentId, NoticeState state, ResourceData::ResourceType childType,
                   unsigned int childId);

// Tells those who observe the notice's object, of that type, on this thread.
void Notify(const Notice& notice, ResourceData::ResourceType type);

}  // namespace QorviViewPlugin
