// SPDX-License-Identifier: Apache-2.0
#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/SessionFrame.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/protocol/UserMessages.h"
#include "VantBase/Log.h"

namespace QorviViewPlugin {
namespace {

using Vant::Base::details::IOrlFormatLog;

bool AnswerGetCurrentUser(const protocol::GetCurrentUserRequest&, protocol::GetCurrentUserResponse& response) {
  response.user_id = -1;
  const bool known = Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance().GetUserInfo(response.user_id,
                                                                                                   response.user_name);
  if (known) {
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetCurrentUser Success[%s(%d)]", "GetCurrentUser", __FILE__, __LINE__);
  } else {
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetCurrentUser Failed[%s(%d)]", "GetCurrentUser", __FILE__, __LINE__);
  }
  return known;
}

void AnswerGetAllUserInfo(const protocol::UserRequestInfo&, protocol::UserResponseInfo& response) {
  ErrorCode error;
  std::vector<std::shared_ptr<ResourceStore::CUserInfo>> users;
  if (!Manager().GetAllUsers(error, users)) {
    response.error_info = TextOf(error);
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetAllUserInfo Failed: %s[%s(%d)]", "GetAllUserInfo",
                  response.error_info.c_str(), __FILE__, __LINE__);
    return;
  }
  for (const auto& user : users) {
    protocol::UserDetailInfo entry;
    entry.user_id = LowBits(static_cast<unsigned long long>(user->GetVal_m_userID()));
    entry.user_name = user->GetVal_m_strUsername();
    entry.user_online = user->GetVal_b_cs_online();
    entry.user_ptz_ability = user->GetVal_ptz_control_perm();
    response.user_detail_list.push_back(std::move(entry));
  }
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetAllUserInfo Success User Number: %d[%s(%d)]", "GetAllUserInfo",
                static_cast<int>(users.size()), __FILE__, __LINE__);
}

// Asks the server to share the view; false with the transport's error, else the reply's body.
bool SendShareRequest(const protocol::ViewShareResquestInfo& request, std::string& reply, ErrorCode& error) {
  NetLink::CRapidJsonProto body;
  body.set_v("/ViewShare/ShareUsers", request.share_users);
  const std::string bodyText = body.get_str(0);
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]ViewShare User Ids Request: %s[%s(%d)]", "ViewShareUsers",
                bodyText.c_str(), __FILE__, __LINE__);

  auto send = std::make_shared<NetLink::CClientSendInfo>();
  send->SetVal_Method("POST");
  send->SetVal_URL("/NXAPI/Vantorel/Platform/V1/View/" + request.view_id + "/Share");
  send->SetVal_send_data(bodyText);
  auto receive = std::make_shared<NetLink::CClientRecvInfo>();
  if (!Vant::Base::CSingleton<BizShared::CNetCommManager>::Instance().ClientSynSend(receive, send, 0)) {
    error = receive->GetVal_Error_code();
    return false;
  }
  reply = receive->GetVal_Receive_Data();
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Share View Recvive Data: %s[%s(%d)]", "ViewShareUsers", reply.c_str(),
                __FILE__, __LINE__);
  return true;
}

ErrorCode ErrorOf(int module, int code) {
  return ErrorCode(module, code, 0, {});
}

protocol::UserErrorInfo ReadUserError(const NetLink::CRapidJsonProto& reply, int number) {
  const std::string prefix = "/ResponseStatus/Data/ErrorList/Error[" + IntToString(number) + "]/";
  protocol::UserErrorInfo user;
  user.user_id = reply.get_int_v(prefix + "UserID", -1);
  user.user_name = reply.get_v(prefix + "UserName", "");
  user.error_model = reply.get_int_v(prefix + "ErrorModule", -1);
  user.error_code = reply.get_int_v(prefix + "ErrorCode", -1);
  return user;
}

// As the log shows a user; only the first name is followed by a colon.
std::string LogTextOf(const protocol::UserErrorInfo& user) {
  return "UserID: " + IntToString(user.user_id) + ",UserName" + user.user_name + ",ErrorModule" +
         IntToString(user.error_model) + ",ErrorCode" + IntToString(user.error_code) + ";";
}

// The users who could not be given the view, one line of text each. True when there are none.
bool AnswerUserErrors(const NetLink::CRapidJsonProto& reply, protocol::ShareViewResponseInfo& response) {
  std::string logText;
  const int count = reply.get_cnt("/ResponseStatus/Data/ErrorList/Error");
  for (int number = 1; number <= count; ++number) {
    const auto& user = response.lst_user_data.emplace_back(ReadUserError(reply, number));
    logText += LogTextOf(user);
    response.error_info += user.user_name + ": " + TextOf(ErrorOf(user.error_model, user.error_code)) + "\n";
  }
  if (response.lst_user_data.empty()) return true;
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Partial User Share Failed: %s[%s(%d)]", "ViewShareUsers", logText.c_str(),
                __FILE__, __LINE__);
  return false;
}

bool AnswerViewShareUsers(const protocol::ViewShareResquestInfo& request, protocol::ShareViewResponseInfo& response) {
  std::string replyText;
  ErrorCode transportError;
  if (!SendShareRequest(request, replyText, transportError)) {
    response.error_model = transportError.GetMainError();
    response.error_code = transportError.GetSubError();
    response.error_info = TextOf(transportError);
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]View Share ORL Failed First_code: %d, Second_code: %d[%s(%d)]",
                  "ViewShareUsers", response.error_model, response.error_code, __FILE__, __LINE__);
    return false;
  }

  NetLink::CRapidJsonProto reply;
  reply.set_str(replyText);
  response.error_model = reply.get_int_v("/ResponseStatus/ErrorModule", -1);
  response.error_code = reply.get_int_v("/ResponseStatus/ErrorCode", -1);
  if (response.error_code != 0) {
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Receive View Share Response First_code: %d, Second_code: %d[%s(%d)]",
                  "ViewShareUsers", response.error_model, response.error_code, __FILE__, __LINE__);
    response.error_info = TextOf(ErrorOf(response.error_model, response.error_code));
    return false;
  }
  return AnswerUserErrors(reply, response);
}

}  // namespace
}  // namespace QorviViewPlugin

bool GetCurrentUser(const std::string& request, std::string& response) {
  return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::AnswerGetCurrentUser);
}

bool GetAllUserInfo(const std::string& request, std::string& response) {
  return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::AnswerGetAllUserInfo);
}

bool ViewShareUsers(const std::string& request, std::string& response) {
  return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::AnswerViewShareUsers);
}
