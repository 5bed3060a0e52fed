// SPDX-License-Identifier: Apache-2.0
#include "BizShared/UserCommonManager.h"
#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDataManager/sessions/CmsShareViewSession.h"
#include "QorviViewPlugin/base/LogLine.h"
#include "QorviViewPlugin/base/TextConversion.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace QorviViewPlugin {
namespace {

bool AnswerGetCurrentUser(const protocol::GetCurrentUserRequest&, protocol::GetCurrentUserResponse& response) {
  response.user_id = -1;
  const bool known = Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance().GetUserInfo(response.user_id,
                                                                                                   response.user_name);
  if (known) {
    QORVI_LOG_INFO("GetCurrentUser", "GetCurrentUser Success");
  } else {
    QORVI_LOG_INFO("GetCurrentUser", "GetCurrentUser Failed");
  }
  return known;
}

void AnswerGetAllUserInfo(const protocol::UserRequestInfo&, protocol::UserResponseInfo& response) {
  ErrorCode error;
  std::vector<std::shared_ptr<ResourceStore::CUserInfo>> users;
  if (!Manager().GetAllUsers(error, users)) {
    response.error_info = TextOf(error);
    QORVI_LOG_INFO("GetAllUserInfo", "GetAllUserInfo Failed: %s", response.error_info.c_str());
    return;
  }
  for (const auto& user : users) {
    response.user_detail_list.push_back({.user_id = LowBits(static_cast<unsigned long long>(user->GetVal_m_userID())),
                                         .user_name = user->GetVal_m_strUsername(),
                                         .user_online = user->GetVal_b_cs_online(),
                                         .user_ptz_ability = user->GetVal_ptz_control_perm()});
  }
  QORVI_LOG_INFO("GetAllUserInfo", "GetAllUserInfo Success User Number: %d", static_cast<int>(users.size()));
}

// As the log shows a user; only the first name is followed by a colon.
std::string LogTextOf(const CmsShareView::RefusedUser& user) {
  return "UserID: " + IntToString(user.id) + ",UserName" + user.name + ",ErrorModule" + IntToString(user.errorModule) +
         ",ErrorCode" + IntToString(user.errorCode) + ";";
}

bool AnswerViewShareUsers(const protocol::ViewShareResquestInfo& request, protocol::ShareViewResponseInfo& response) {
  CmsShareView session;
  const bool accepted = session.ShareCmsView(request.view_id, request.share_users);
  response.error_model = session.m_error.GetMainError();
  response.error_code = session.m_error.GetSubError();
  if (!accepted) {
    response.error_info = TextOf(session.m_error);
    if (!session.m_isAnswered) {
      QORVI_LOG_INFO("ViewShareUsers", "View Share ORL Failed First_code: %d, Second_code: %d", response.error_model,
                     response.error_code);
    }
    return false;
  }
  if (session.m_refusedUsers.empty()) return true;
  // One line of text for each user who could not be given the view.
  std::string logText;
  for (const CmsShareView::RefusedUser& user : session.m_refusedUsers) {
    response.lst_user_data.push_back({user.id, user.name, user.errorModule, user.errorCode});
    logText += LogTextOf(user);
    response.error_info += user.name + ": " + TextOf(ErrorCode(user.errorModule, user.errorCode, 0, {})) + "\n";
  }
  QORVI_LOG_INFO("ViewShareUsers", "Partial User Share Failed: %s", logText.c_str());
  return false;
}

}  // namespace
}  // namespace QorviViewPlugin

QORVI_EXCHANGE(GetCurrentUser)
QORVI_EXCHANGE(GetAllUserInfo)
QORVI_EXCHANGE(ViewShareUsers)
