// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/Exchange.h"

#include <QObject>

#include "ErrorText/ErrorText.h"
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

}  // namespace QorviViewPlugin
