// SPDX-License-Identifier: Apache-2.0
#include "BizShared/details/ServerRequest.h"

#include "BizShared/NetCommManager.h"
#include "BizShared/details/Reply.h"

namespace BizShared::details {

using Vant::Base::Error::ErrorCode;

NetLink::CClientSendInfo GetRequest(const std::string& resource) {
  NetLink::CClientSendInfo send;
  send.SetVal_Method("GET");
  send.SetVal_URL(kPlatformUrl + resource);
  return send;
}

bool Ask(const NetLink::CClientSendInfo& send, RequestContext& context, std::string& reply, ErrorCode& error) {
  NetLink::CClientRecvInfo recv;
  const bool hasArrived = CNetCommManager::Instance().Send(recv, send, context);
  if (hasArrived) {
    reply = recv.GetVal_Receive_Data();
  } else {
    error = recv.GetVal_Error_code();
  }
  return hasArrived;
}

bool Ask(const NetLink::CClientSendInfo& send, RequestContext& context, NetLink::CRapidJsonProto& reply,
         ErrorCode& error) {
  std::string text;
  if (!Ask(send, context, text, error)) return false;
  error = ReadEnvelope(text, reply);
  return error.GetSubError() == 0;
}

}  // namespace BizShared::details
