// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/sessions/SessionFrame.h"

#include <memory>

#include "BizShared/NetCommManager.h"
#include "QorviViewPlugin/base/LogLine.h"

namespace QorviViewPlugin {
namespace {

constexpr unsigned long kListingTimeoutMs = 30000;

void LogFailure(const SessionTexts& texts, const char* prefix, const ErrorCode& error) {
  QORVI_LOG_ERROR(texts.function, "%sfailed, [MainError: %d],[SubError: %d]", prefix, error.GetMainError(),
                  error.GetSubError());
}

void LogEmptyReply(const SessionTexts& texts) {
  QORVI_LOG_ERROR(texts.function, "%sfailed, strRawData empty", texts.prefix);
}

std::optional<std::string> Send(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error) {
  std::optional<std::string> body = SendRequest(request, error);
  if (!body) LogFailure(texts, texts.transportPrefix, error);
  return body;
}

bool LogOutcome(const SessionTexts& texts, bool accepted, const ErrorCode& error) {
  if (accepted) {
    QORVI_LOG_INFO(texts.function, "%ssuccess", texts.prefix);
  } else {
    LogFailure(texts, texts.prefix, error);
  }
  return accepted;
}

}  // namespace

std::optional<std::string> SendRequest(const SessionRequest& request, ErrorCode& error) {
  const auto send = std::make_shared<NetLink::CClientSendInfo>();
  send->SetVal_Method(request.method);
  send->SetVal_URL(request.url);
  if (request.isListing) {
    send->SetVal_Request_Data(request.body);
    send->SetVal_Timeout(kListingTimeoutMs);
  } else {
    send->SetVal_send_data(request.body);
  }
  auto reply = std::make_shared<NetLink::CClientRecvInfo>();
  auto& transport = Vant::Base::CSingleton<BizShared::CNetCommManager>::Instance();
  if (!transport.ClientSynSend(reply, send, 0)) {
    error = reply->GetVal_Error_code();
    return std::nullopt;
  }
  return reply->GetVal_Receive_Data();
}

bool RunStatusSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      ChangeNumber* changeNumber) {
  const std::optional<std::string> body = Send(request, texts, error);
  if (!body) return false;
  NetLink::CRapidJsonProto reply;
  reply.set_str(*body);
  const bool accepted = ReadResponseStatus(reply, CascadingText::Kept, error);
  if (accepted && changeNumber) *changeNumber = ReadDataNumber(reply);
  return LogOutcome(texts, accepted, error);
}

bool RunDataSession(const SessionRequest& request, const SessionTexts& texts, CascadingText cascading, ErrorCode& error,
                    const ReplyReader& readData) {
  const std::optional<std::string> body = Send(request, texts, error);
  if (!body) return false;
  if (request.marksSubSystemEarly) error.SetSubSystemErrorCode(kSubSystemCode);
  if (body->empty()) {
    LogEmptyReply(texts);
    return false;
  }
  NetLink::CRapidJsonProto reply;
  reply.set_str(*body);
  const bool accepted = ReadResponseStatus(reply, cascading, error);
  if (accepted) readData(reply);
  return LogOutcome(texts, accepted, error);
}

bool RunConfigSession(const SessionRequest& request, const SessionTexts& texts, ErrorCode& error,
                      const ReplyReader& readData) {
  const std::optional<std::string> body = Send(request, texts, error);
  if (!body) return false;
  if (body->empty()) {
    LogEmptyReply(texts);
    return true;
  }
  NetLink::CRapidJsonProto reply;
  reply.set_str(*body);
  const bool accepted = ReadResponseStatus(reply, CascadingText::Ignored, error);
  if (readData) readData(reply);
  return LogOutcome(texts, accepted, error);
}

}  // namespace QorviViewPlugin
