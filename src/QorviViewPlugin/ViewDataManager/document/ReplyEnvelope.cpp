// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"

#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"

namespace QorviViewPlugin {

bool ReadResponseStatus(const NetLink::CRapidJsonProto& reply, CascadingText cascading, ErrorCode& error) {
  error.SetMainError(reply.get_int_v("/ResponseStatus/ErrorModule", -1));
  error.SetSubError(reply.get_int_v("/ResponseStatus/ErrorCode", -1));
  error.SetSubSystemErrorCode(kSubSystemCode);
  if (cascading == CascadingText::Kept) {
    error.SetCasadingErrorInfo(reply.get_v("/ResponseStatus/CascadingErrorInfo", ""));
  }
  return error.GetSubError() == 0;
}

ChangeNumber ReadDataNumber(const NetLink::CRapidJsonProto& reply) {
  return ReadChangeNumber(reply.get_v("/ResponseStatus/Data/ChangeNumber", ""));
}

}  // namespace QorviViewPlugin
