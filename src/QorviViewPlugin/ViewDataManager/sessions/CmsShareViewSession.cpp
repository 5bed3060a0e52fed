// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/sessions/CmsShareViewSession.h"

#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/sessions/SessionFrame.h"
#include "QorviViewPlugin/base/LogLine.h"

namespace QorviViewPlugin {
namespace {

constexpr char kFunction[] = "ViewShareUsers";

std::string WriteShareRequest(const std::string& userIds) {
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewShare/ShareUsers", userIds);
  return document.get_str(0);
}

}  // namespace

bool CmsShareView::ShareCmsView(const std::string& viewId, const std::string& userIds) {
  const SessionRequest request{"POST", "/NXAPI/Vantorel/Platform/V1/View/" + viewId + "/Share",
                               WriteShareRequest(userIds)};
  QORVI_LOG_INFO(kFunction, "ViewShare User Ids Request: %s", request.body.c_str());
  const std::optional<std::string> body = SendRequest(request, m_error);
  if (!body) return false;
  m_isAnswered = true;
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
  PathCursor at(reply, "/ResponseStatus/Data/ErrorList/");
  ReadEach(at, "Error", m_refusedUsers, [&at](RefusedUser& user) {
    user = {at.Number("UserID"), at.Text("UserName"), at.Number("ErrorModule"), at.Number("ErrorCode")};
  });
  return true;
}

}  // namespace QorviViewPlugin
