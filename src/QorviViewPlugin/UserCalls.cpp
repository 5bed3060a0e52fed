// SPDX-License-Identifier: Apache-2.0
#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewDataManager/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/SessionFrame.h"
#include "QorviViewPlugin/protocol/UserMessages.h"
#include "VantBase/Log.h"

namespace {

using namespace QorviViewPlugin;
using namespace QorviViewPlugin_view_plugin_protocol;
using Vant::Base::details::IOrlFormatLog;

std::string WriteShareRequest(const std::string& shareUsers) {
  NetLink::CRapidJsonProto document;
  document.set_v("/ViewShare/ShareUsers", shareUsers);
  return document.get_str(0);
}

// Sends; false when no reply arrived, and the response says why.
bool SendShareRequest(const ViewShareResquestInfo& request, std::string& reply, ShareViewResponseInfo& response) {
  const std::string body = WriteShareRequest(request.share_users);
  const auto send = std::make_shared<NetLink::CClientSendInfo>();
  send->SetVal_Method("POST");
  // The id goes out as the host wrote it; the transport refuses what could not stand in a path.
  send->SetVal_URL("/NXAPI/Vantorel/Platform/V1/View/" + request.view_id + "/Share");
  send->SetVal_send_data(body);
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]ViewShare User Ids Request: %s[%s(%d)]", "ViewShareUsers", body.c_str(),
                __FILE__, __LINE__);
  auto received = std::make_shared<NetLink::CClientRecvInfo>();
  if (Vant::Base::CSingleton<BizShared::CNetCommManager>::Instance().ClientSynSend(received, send, 0)) {
    reply = received->GetVal_Receive_Data();
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Share View Recvive Data: %s[%s(%d)]", "ViewShareUsers", reply.c_str(),
                  __FILE__, __LINE__);
    return true;
  }
  const ErrorCode error = received->GetVal_Error_code();
  response.error_model = error.GetMainError();
  response.error_code = error.GetSubError();
  response.error_info = ErrorTextOf(error);
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]View Share ORL Failed First_code: %d, Second_code: %d[%s(%d)]",
                "ViewShareUsers", response.error_model, response.error_code, __FILE__, __LINE__);
  return false;
}

std::string TextOfPair(int module, int code) {
  return ErrorTextOf(ErrorCode(module, code, 0, ""));
}

// The users who were left out, with their line for the host; answers the text for the log.
std::string ReadUserErrors(NetLink::CRapidJsonProto& reply, ShareViewResponseInfo& response) {
  std::string log;
  std::string details;
  PathCursor at(reply, "/ResponseStatus/Data/ErrorList/");
  const int count = at.Count("Error");
  for (int i = 1; i <= count; ++i) {
    const auto level = at.Enter("Error", i);
    UserErrorInfo& user = response.lst_user_data.emplace_back();
    user.user_id = at.Number("UserID");
    user.user_name = at.Text("UserName");
    user.error_model = at.Number("ErrorModule");
    user.error_code = at.Number("ErrorCode");
    log += "UserID: " + IntToString(user.user_id) + ",UserName" + user.user_name + ",ErrorModule" +
           IntToString(user.error_model) + ",ErrorCode" + IntToString(user.error_code) + ";";
    details += user.user_name + ": " + TextOfPair(user.error_model, user.error_code) + "\n";
  }
  response.error_info = details;
  return log;
}

bool ReadShareReply(const std::string& text, ShareViewResponseInfo& response) {
  NetLink::CRapidJsonProto reply;
  reply.set_str(text);
  response.error_model = reply.get_int_v("/ResponseStatus/ErrorModule", -1);
  response.error_code = reply.get_int_v("/ResponseStatus/ErrorCode", -1);
  if (response.error_code != 0) {
    IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Receive View Share Response First_code: %d, Second_code: %d[%s(%d)]",
                  "ViewShareUsers", response.error_model, response.error_code, __FILE__, __LINE__);
    response.error_info = TextOfPair(response.error_model, response.error_code);
    return false;
  }
  const std::string log = ReadUserErrors(reply, response);
  if (response.lst_user_data.empty()) return true;
  IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]Partial User Share Failed: %s[%s(%d)]", "ViewShareUsers", log.c_str(),
                __FILE__, __LINE__);
  return false;
}

}  // namespace

bool GetCurrentUser(const std::string& request, std::string& response) {
  return RunExchange<GetCurrentUserRequest, GetCurrentUserResponse>(
      request, response, [](const GetCurrentUserRequest&, GetCurrentUserResponse& to) {
        to.user_id = -1;
        auto& users = Vant::Base::CSingleton<BizShared::CUserCommonManager>::Instance();
        if (users.GetUserInfo(to.user_id, to.user_name)) {
          IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetCurrentUser Success[%s(%d)]", "GetCurrentUser", __FILE__,
                        __LINE__);
          return true;
        }
        IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetCurrentUser Failed[%s(%d)]", "GetCurrentUser", __FILE__,
                      __LINE__);
        return false;
      });
}

bool GetAllUserInfo(const std::string& request, std::string& response) {
  return RunExchange<UserRequestInfo, UserResponseInfo>(
      request, response, [](const UserRequestInfo&, UserResponseInfo& to) {
        ErrorCode error;
        std::vector<std::shared_ptr<ResourceStore::CUserInfo>> users;
        if (!Manager().GetAllUsers(error, users)) {
          to.error_info = ErrorTextOf(error);
          IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetAllUserInfo Failed: %s[%s(%d)]", "GetAllUserInfo",
                        to.error_info.c_str(), __FILE__, __LINE__);
          return;
        }
        for (const auto& user : users) {
          UserDetailInfo& entry = to.user_detail_list.emplace_back();
          entry.user_id = LowBits(static_cast<unsigned long long>(user->GetVal_m_userID()));
          entry.user_name = user->GetVal_m_strUsername();
          entry.user_online = user->GetVal_b_cs_online();
          entry.user_ptz_ability = user->GetVal_ptz_control_perm();
        }
        IOrlFormatLog(kInfoLevel, kInfoModule, "[%s]GetAllUserInfo Success User Number: %d[%s(%d)]", "GetAllUserInfo",
                      static_cast<int>(users.size()), __FILE__, __LINE__);
      });
}

bool ViewShareUsers(const std::string& request, std::string& response) {
  return RunExchange<ViewShareResquestInfo, ShareViewResponseInfo>(
      request, response, [](const ViewShareResquestInfo& from, ShareViewResponseInfo& to) {
        std::string reply;
        return SendShareRequest(from, reply, to) && ReadShareReply(reply, to);
      });
}
