// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/Exchange.h"

#include <QObject>
#include <thread>

#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "ResourceStore/ViewGroupManager.h"
#include "VeltControl/VeltControl.h"

namespace QorviViewPlugin {

std::string InternalErrorText() {
  return TextOf(Vant::Base::Error::ErrorCode(2, 1, 0, {}));
}

std::string Translated(const char* key) {
  return VeltControl::QStringToString(QObject::tr(key));
}

std::string TextOf(const Vant::Base::Error::ErrorCode& error) {
  return ErrorText::GetErrorInfoByErrorCode(error);
}

unsigned int OwnerForType(int type) {
  if (type == ViewTypePublic) return kNoId;
  int id = -1;
  Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance().GetUserID(id);
  return AsUnsigned(id);
}

unsigned int TopLevelAsNone(unsigned int id) {
  return id == kHostTopLevel || id == kHostOtherTopLevel ? kNoId : id;
}

void WaitForViewDownload() {
  const auto& downloads = Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
  while (!downloads.IsViewDownloadSuccess()) std::this_thread::yield();
}

}  // namespace QorviViewPlugin
