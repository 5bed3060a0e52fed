// SPDX-License-Identifier: Apache-2.0
// Requests and responses of the first-load, user, sharing and default-view calls. Names of records and keys are the
// host's, letter for letter; "error_info" is empty on success.
#pragma once

#include "QorviViewPlugin/protocol/JsonRecord.h"

namespace QorviViewPlugin_view_plugin_protocol {

using QorviVideoComm::Boolean;
using QorviVideoComm::Integer;
using QorviVideoComm::Sequence;
using QorviVideoComm::Text;

// A request whose only text nobody reads.
#define QORVI_REQUEST_INFO_ONLY(FIELD) FIELD(Text, request_info)

// --- First load

QORVI_RECORD(ClienInitViewDataRequest, QORVI_REQUEST_INFO_ONLY)

#define QORVI_CLIEN_INIT_VIEW_DATA_RESPONSE(FIELD) \
  FIELD(Text, error_info)                          \
  FIELD(Boolean, init_finish)
QORVI_RECORD(ClienInitViewDataResponse, QORVI_CLIEN_INIT_VIEW_DATA_RESPONSE)

// --- Users

#define QORVI_GET_CURRENT_USER_REQUEST(FIELD) FIELD(Text, str_request)
QORVI_RECORD(GetCurrentUserRequest, QORVI_GET_CURRENT_USER_REQUEST)

#define QORVI_GET_CURRENT_USER_RESPONSE(FIELD) \
  FIELD(Integer, user_id)                      \
  FIELD(Text, user_name)
QORVI_RECORD(GetCurrentUserResponse, QORVI_GET_CURRENT_USER_RESPONSE)

#define QORVI_USER_DETAIL_INFO(FIELD) \
  FIELD(Integer, user_id)             \
  FIELD(Text, user_name)              \
  FIELD(Boolean, user_online)         \
  FIELD(Integer, user_ptz_ability)
QORVI_RECORD(UserDetailInfo, QORVI_USER_DETAIL_INFO)

QORVI_RECORD(UserRequestInfo, QORVI_REQUEST_INFO_ONLY)

#define QORVI_USER_RESPONSE_INFO(FIELD) \
  FIELD(Text, error_info)               \
  FIELD(Sequence<UserDetailInfo>, user_detail_list)
QORVI_RECORD(UserResponseInfo, QORVI_USER_RESPONSE_INFO)

// --- Sharing

#define QORVI_VIEW_SHARE_RESQUEST_INFO(FIELD) \
  FIELD(Text, share_users)                    \
  FIELD(Text, view_id)
QORVI_RECORD(ViewShareResquestInfo, QORVI_VIEW_SHARE_RESQUEST_INFO)

#define QORVI_USER_ERROR_INFO(FIELD) \
  FIELD(Integer, user_id)            \
  FIELD(Text, user_name)             \
  FIELD(Integer, error_model)        \
  FIELD(Integer, error_code)
QORVI_RECORD(UserErrorInfo, QORVI_USER_ERROR_INFO)

// The list holds the users who could not be given the view.
#define QORVI_SHARE_VIEW_RESPONSE_INFO(FIELD) \
  FIELD(Integer, error_model)                 \
  FIELD(Integer, error_code)                  \
  FIELD(Text, error_info)                     \
  FIELD(Sequence<UserErrorInfo>, lst_user_data)
QORVI_RECORD(ShareViewResponseInfo, QORVI_SHARE_VIEW_RESPONSE_INFO)

// --- Default view: set flat, answered two objects deep.

#define QORVI_VIEW_CONFIG(FIELD) \
  FIELD(Integer, view_type)      \
  FIELD(Text, view_id)
QORVI_RECORD(ViewConfig, QORVI_VIEW_CONFIG)

#define QORVI_CLIENT_VIEW_CONFIG_DATA(FIELD) FIELD(ViewConfig, ViewDefaultConfig)
QORVI_RECORD(ClientViewConfigData, QORVI_CLIENT_VIEW_CONFIG_DATA)

QORVI_RECORD(GetClientDefaultViewConfigRequest, QORVI_REQUEST_INFO_ONLY)

#define QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_RESPONSE(FIELD) \
  FIELD(Integer, error_module)                               \
  FIELD(Integer, error_code)                                 \
  FIELD(Text, error_info)                                    \
  FIELD(ClientViewConfigData, ViewData)
QORVI_RECORD(GetClientDefaultViewConfigResponse, QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_RESPONSE)

QORVI_RECORD(ClienDefaultViewConfigRequest, QORVI_VIEW_CONFIG)

#define QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REPONSE(FIELD) FIELD(Text, error_info)
QORVI_RECORD(ClienDefaultViewConfigReponse, QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REPONSE)

// --- No exported function uses this one; the observer registry reads the same keys by path.

#define QORVI_RESOURCE_UPDATE_REGISTER(FIELD) \
  FIELD(Integer, ResourceType)                \
  FIELD(Text, ID)                             \
  FIELD(Boolean, IsRegister)
QORVI_RECORD(ResourceUpdateRegister, QORVI_RESOURCE_UPDATE_REGISTER)

}  // namespace QorviViewPlugin_view_plugin_protocol
