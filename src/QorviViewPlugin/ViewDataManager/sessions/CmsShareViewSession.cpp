// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/sessions/CmsShareViewSession.h"

#include "QorviViewPlugin/LogLine.h"
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/sessions/SessionFrame.h"

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
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]ViewShare User Ids Request: %s[%s(%d)]", kFunction, request.body.c_str(),
                __FILE__, __LINE__);
  const std::optional<std::string> body = SendRequest(request, m_error);
  if (!body) {
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]View Share ORL Failed First_code: %d, Second_code: %d[%s(%d)]",
                  kFunction, m_error.GetMainError(), m_error.GetSubError(), __FILE__, __LINE__);
    return false;
  }
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Share View Recvive Data: %s[%s(%d)]", kFunction, body->c_str(), __FILE__,
                __LINE__);
  NetLink::CRapidJsonProto reply;
  reply.set_str(*body);
  const bool accepted = ReadResponseStatus(reply, CascadingText::Ignored, m_error);
  m_error.SetSubSystemErrorCode(0);  // unlike those of the other sessions
  if (!accepted) {
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Receive View Share Response First_code: %d, Second_code: %d[%s(%d)]",
                  kFunction, m_error.GetMainError(), m_error.GetSubError(), __FILE__, __LINE__);
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
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Partial User Share Failed: %s[%s(%d)]", kFunction, logText.c_str(),
                  __FILE__, __LINE__);
  }
  return true;
}

}  // namespace QorviViewPlugin
