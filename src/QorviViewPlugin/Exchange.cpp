// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/Exchange.h"

#include <QObject>

#include "BizShared/UserCommonManager.h"
#include "ErrorText/ErrorText.h"
#include "VeltControl/VeltControl.h"

namespace QorviViewPlugin {

std::string ErrorTextOf(const Vant::Base::Error::ErrorCode& error) {
  return ErrorText::GetErrorInfoByErrorCode(error);
}

std::string InternalErrorText() {
  return ErrorTextOf(Vant::Base::Error::ErrorCode(2, 1, 0, ""));
}

std::string Translated(const char* key) {
  return VeltControl::QStringToString(QObject::tr(key));
}

int CurrentUserId() {
  int id = -1;
  Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance().GetUserID(id);
  return id;
}

}  // namespace QorviViewPlugin
