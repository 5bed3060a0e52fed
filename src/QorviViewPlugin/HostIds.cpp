// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/HostIds.h"

#include "BizShared/UserCommonManager.h"
#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"

namespace QorviViewPlugin {

unsigned int TopLevelAsNone(unsigned int id) {
  return id == kHostTopLevel || id == kHostOtherTopLevel ? kNoId : id;
}

unsigned int OwnerForType(int type) {
  if (type == ViewTypePublic) return kNoId;
  int id = -1;
  Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance().GetUserID(id);
  return AsUnsigned(id);
}

}  // namespace QorviViewPlugin
