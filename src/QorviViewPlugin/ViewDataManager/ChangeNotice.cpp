// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/ChangeNotice.h"

#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"

namespace QorviViewPlugin {

Notice ChildNotice(unsigned int parentId, NoticeState state, ResourceData::ResourceType childType,
                   unsigned int childId) {
  Notice notice(UIntToString(parentId), state);
  notice.child_type = childType;
  notice.child_id = UIntToString(childId);
  return notice;
}

void Notify(const Notice& notice, ResourceData::ResourceType type) {
  Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().UpdateResourceInfo(notice, type);
}

}  // namespace QorviViewPlugin
