// SPDX-License-Identifier: Apache-2.0
// Requests and responses of the first-load, user, sharing and default-view calls. Record and key names are the host's,
// odd spellings included.
#pragma once

#include "QorviViewPlugin/protocol/JsonRecord.h"

namespace QorviViewPlugin_view_plugin_protocol {

// clang-format off

#define QORVI_CLIEN_INIT_VIEW_DATA_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, request_info)
QORVI_RECORD(ClienInitViewDataRequest, QORVI_CLIEN_INIT_VIEW_DATA_REQUEST_FIELDS)
#undef QORVI_CLIEN_INIT_VIEW_DATA_REQUEST_FIELDS

#define QORVI_CLIEN_INIT_VIEW_DATA_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, error_info) \
  FIELD(bool, init_finish)
QORVI_RECORD(ClienInitViewDataResponse, QORVI_CLIEN_INIT_VIEW_DATA_RESPONSE_FIELDS)
#undef QORVI_CLIEN_INIT_VIEW_DATA_RESPONSE_FIELDS

#define QORVI_GET_CURRENT_USER_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, str_request)
QORVI_RECORD(GetCurrentUserRequest, QORVI_GET_CURRENT_USER_REQUEST_FIELDS)
#undef QORVI_GET_CURRENT_USER_REQUEST_FIELDS

#define QORVI_GET_CURRENT_USER_RESPONSE_FIELDS(FIELD) \
  FIELD(int, user_id) \
  FIELD(std::string, user_name)
QORVI_RECORD(GetCurrentUserResponse, QORVI_GET_CURRENT_USER_RESPONSE_FIELDS)
#undef QORVI_GET_CURRENT_USER_RESPONSE_FIELDS

#define QORVI_USER_REQUEST_INFO_FIELDS(FIELD) \
  FIELD(std::string, request_info)
QORVI_RECORD(UserRequestInfo, QORVI_USER_REQUEST_INFO_FIELDS)
#undef QORVI_USER_REQUEST_INFO_FIELDS

#define QORVI_USER_DETAIL_INFO_FIELDS(FIELD) \
  FIELD(int, user_id) \
  FIELD(std::string, user_name) \
  FIELD(bool, user_online) \
  FIELD(int, user_ptz_ability)
QORVI_RECORD(UserDetailInfo, QORVI_USER_DETAIL_INFO_FIELDS)
#undef QORVI_USER_DETAIL_INFO_FIELDS

#define QORVI_USER_RESPONSE_INFO_FIELDS(FIELD) \
  FIELD(std::string, error_info) \
  FIELD(std::vector<UserDetailInfo>, user_detail_list)
QORVI_RECORD(UserResponseInfo, QORVI_USER_RESPONSE_INFO_FIELDS)
#undef QORVI_USER_RESPONSE_INFO_FIELDS

#define QORVI_VIEW_SHARE_RESQUEST_INFO_FIELDS(FIELD) \
  FIELD(std::string, share_users) \
  FIELD(std::string, view_id)
QORVI_RECORD(ViewShareResquestInfo, QORVI_VIEW_SHARE_RESQUEST_INFO_FIELDS)
#undef QORVI_VIEW_SHARE_RESQUEST_INFO_FIELDS

// A user who could not be given a view, and why.
#define QORVI_USER_ERROR_INFO_FIELDS(FIELD) \
  FIELD(int, user_id) \
  FIELD(std::string, user_name) \
  FIELD(int, error_model) \
  FIELD(int, error_code)
QORVI_RECORD(UserErrorInfo, QORVI_USER_ERROR_INFO_FIELDS)
#undef QORVI_USER_ERROR_INFO_FIELDS

#define QORVI_SHARE_VIEW_RESPONSE_INFO_FIELDS(FIELD) \
  FIELD(int, error_model) \
  FIELD(int, error_code) \
  FIELD(std::string, error_info) \
  FIELD(std::vector<UserErrorInfo>, lst_user_data)
QORVI_RECORD(ShareViewResponseInfo, QORVI_SHARE_VIEW_RESPONSE_INFO_FIELDS)
#undef QORVI_SHARE_VIEW_RESPONSE_INFO_FIELDS

#define QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, request_info)
QORVI_RECORD(GetClientDefaultViewConfigRequest, QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_REQUEST_FIELDS)
#undef QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_REQUEST_FIELDS

// The default view.
#define QORVI_VIEW_CONFIG_FIELDS(FIELD) \
  FIELD(int, view_type) \
  FIELD(std::string, view_id)
QORVI_RECORD(ViewConfig, QORVI_VIEW_CONFIG_FIELDS)
#undef QORVI_VIEW_CONFIG_FIELDS

#define QORVI_CLIENT_VIEW_CONFIG_DATA_FIELDS(FIELD) \
  FIELD(ViewConfig, ViewDefaultConfig)
QORVI_RECORD(ClientViewConfigData, QORVI_CLIENT_VIEW_CONFIG_DATA_FIELDS)
#undef QORVI_CLIENT_VIEW_CONFIG_DATA_FIELDS

#define QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_RESPONSE_FIELDS(FIELD) \
  FIELD(int, error_module) \
  FIELD(int, error_code) \
  FIELD(std::string, error_info) \
  FIELD(ClientViewConfigData, ViewData)
QORVI_RECORD(GetClientDefaultViewConfigResponse, QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_RESPONSE_FIELDS)
#undef QORVI_GET_CLIENT_DEFAULT_VIEW_CONFIG_RESPONSE_FIELDS

#define QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REQUEST_FIELDS(FIELD) \
  FIELD(int, view_type) \
  FIELD(std::string, view_id)
QORVI_RECORD(ClienDefaultViewConfigRequest, QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REQUEST_FIELDS)
#undef QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REQUEST_FIELDS

#define QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REPONSE_FIELDS(FIELD) \
  FIELD(std::string, error_info)
QORVI_RECORD(ClienDefaultViewConfigReponse, QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REPONSE_FIELDS)
#undef QORVI_CLIEN_DEFAULT_VIEW_CONFIG_REPONSE_FIELDS

// What ViewRegisterResourceUpdate reads by path; no exchange uses the record.
#define QORVI_RESOURCE_UPDATE_REGISTER_FIELDS(FIELD) \
  FIELD(int, ResourceType) \
  FIELD(std::string, ID) \
  FIELD(bool, IsRegister)
QORVI_RECORD(ResourceUpdateRegister, QORVI_RESOURCE_UPDATE_REGISTER_FIELDS)
#undef QORVI_RESOURCE_UPDATE_REGISTER_FIELDS

// clang-format on

}  // namespace QorviViewPlugin_view_plugin_protocol
