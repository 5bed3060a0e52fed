// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/sessions/CmsShareViewSession.h"

#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/sessions/SessionFrame.h"
#include "QorviViewPlugin/base/LogLine.h"
#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {
namespace {

constexpr char kFunction[] = "ViewShareUsers";

std::string WriteShareRequest(const std::string& userIds) {
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewShare/ShareUsers", userIds);
  return document.get_str(0);
}

CmsShareView::RefusedUser ReadRefusedUser(PathCursor& at) {
  return {at.Number("UserID"), at.Text("UserName"), at.Number("ErrorModule"), at.Number("ErrorCode")};
}

// As the log shows a user; only the first name is followed by a colon.
std::string LogTextOf(const CmsShareView::RefusedUser& user) {
  return "UserID: " + IntToString(user.id) + ",UserName" + user.name + ",ErrorModule" + IntToString(user.errorModule) +
         ",ErrorCode" + IntToString(user.errorCode) + ";";
}

}  // namespace

bool CmsShareView::ShareCmsView(const std::string& viewId, const std::string& userIds) {
  const SessionRequest request{"POST", "/NXAPI/Vantorel/Platform/V1/View/" + viewId + "/Share",
                               WriteShareRequest(userIds)};
  QORVI_LOG_INFO(kFunction, "ViewShare User Ids Request: %s", request.body.c_str());
  const std::optional<std::string> body = SendRequest(request, m_error);
  if (!body) {
    QORVI_LOG_INFO(kFunction, "View Share ORL Failed First_code: %d, Second_code: %d", m_error.GetMainError(),
                   m_error.GetSubError());
    return false;
  }
  QORVI_LOG_INFO(kFunction, "Share View Recvive Data: %s", body->c_str());
  NetLink::CRapidJsonProto reply;
  reply.set_str(*body);
  const bool accepted = ReadResponseStatus(reply, CascadingText::Ignored, m_error);
  m_error.SetSubSystemErrorCode(0);  // unlike those of the other sessions
  if (!accepted) {
    QORVI_LOG_INFO(kFunction, "Receive View Share Response First_code: %d, Second_code: %d", m_error.GetMainError(),
                   m_error.GetSubError());
    return false;
  }
  std::string logText;
  PathCursor at(reply, "/ResponseStatus/Data/ErrorList/");
  const int count = at.Count("Error");
  for (int n = 1; n <= count; ++n) {
    const auto level = at.Enter("Error", n);
    logText += LogTextOf(m_refusedUsers.emplace_back(ReadRefusedUser(at)));
  }
  if (!m_refusedUsers.empty()) {
    QORVI_LOG_INFO(kFunction, "Partial User Share Failed: %s", logText.c_str());
  }
  return true;
}

}  // namespace QorviViewPlugin
