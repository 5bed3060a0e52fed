// SPDX-License-Identifier: Apache-2.0
// What observers are told of a change to the cache.
#pragma once

#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {

using Notice = ResourceData::IResourceObserver::Param;

// What a notice says happened.
enum NoticeState : int { NoticeRenamed = 2, NoticeChildAdded = 3, NoticeChildRemoved = 4, NoticeChanged = 7 };

// For the observers of a group: what became of something in it.
inline Notice ChildNotice(unsigned int parentId, NoticeState state, ResourceData::ResourceType childType,
                          unsigned int childId) {
  Notice notice(UIntToString(parentId), state);
  notice.child_type = childType;
  notice.child_id = UIntToString(childId);
  return notice;
}

// Tells those who observe the notice's object, of that type, on this thread.
inline void Notify(const Notice& notice, ResourceData::ResourceType type) {
  Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().UpdateResourceInfo(notice, type);
}

// Tells those who observe a group of a view that has come to it or left it.
inline void NotifyOfMember(unsigned int groupId, NoticeState state, unsigned int viewId) {
  Notify(ChildNotice(groupId, state, ResourceData::ResourceTypeView, viewId), ResourceData::ResourceTypeViewGroup);
}

}  // namespace QorviViewPlugin
