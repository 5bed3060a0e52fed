// SPDX-License-Identifier: Apache-2.0
// Requests and responses of the plan-group and plan calls. Record and key names are the host's, odd spellings included.
#pragma once

#include "QorviViewPlugin/protocol/JsonRecord.h"
#include "QorviViewPlugin/protocol/PlanContentRecords.h"

namespace QorviViewPlugin_view_plugin_protocol {

// clang-format off

#define QORVI_PLAN_GROUP_FIELDS(FIELD) \
  FIELD(std::string, Name) \
  FIELD(std::string, ParentID) \
  FIELD(std::string, ID) \
  FIELD(int, Type) \
  FIELD(bool, is_share_viwgroup)
QORVI_RECORD(PlanGroup, QORVI_PLAN_GROUP_FIELDS)
#undef QORVI_PLAN_GROUP_FIELDS

// A plan without its pages.
#define QORVI_PLAN_BASIC_INFO_FIELDS(FIELD) \
  FIELD(std::string, name) \
  FIELD(std::string, Remark) \
  FIELD(std::string, ID) \
  FIELD(std::string, ParentID) \
  FIELD(int, Type) \
  FIELD(bool, is_share_view)
QORVI_RECORD(PlanBasicInfo, QORVI_PLAN_BASIC_INFO_FIELDS)
#undef QORVI_PLAN_BASIC_INFO_FIELDS

// One hit of a search.
#define QORVI_SEARCHED_PLAN_FIELDS(FIELD) \
  FIELD(std::string, indexCode) \
  FIELD(std::string, name) \
  FIELD(std::string, hightlightName) \
  FIELD(int, roundTime) \
  FIELD(std::string, remark) \
  FIELD(std::string, presetDocType) \
  FIELD(std::string, uploadPresetDoc) \
  FIELD(std::string, appCode) \
  FIELD(std::string, ownerId) \
  FIELD(std::string, flag) \
  FIELD(std::string, autoRun) \
  FIELD(std::string, planStartTime) \
  FIELD(std::string, planEndTime)
QORVI_RECORD(SearchedPlan, QORVI_SEARCHED_PLAN_FIELDS)
#undef QORVI_SEARCHED_PLAN_FIELDS

#define QORVI_GET_PLAN_GROUPS_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, ParentID) \
  FIELD(int, GroupType)
QORVI_RECORD(GetPlanGroupsRequest, QORVI_GET_PLAN_GROUPS_REQUEST_FIELDS)
#undef QORVI_GET_PLAN_GROUPS_REQUEST_FIELDS

#define QORVI_GET_PLAN_GROUPS_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo) \
  FIELD(int, Total) \
  FIELD(std::vector<PlanGroup>, PlanGroups)
QORVI_RECORD(GetPlanGroupsResponse, QORVI_GET_PLAN_GROUPS_RESPONSE_FIELDS)
#undef QORVI_GET_PLAN_GROUPS_RESPONSE_FIELDS

#define QORVI_ADD_PLAN_GROUP_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, Name) \
  FIELD(std::string, ParentID) \
  FIELD(int, Type) \
  FIELD(bool, is_share_viewgroup)
QORVI_RECORD(AddPlanGroupRequest, QORVI_ADD_PLAN_GROUP_REQUEST_FIELDS)
#undef QORVI_ADD_PLAN_GROUP_REQUEST_FIELDS

#define QORVI_ADD_PLAN_GROUP_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo) \
  FIELD(std::string, ID)
QORVI_RECORD(AddPlanGroupResponse, QORVI_ADD_PLAN_GROUP_RESPONSE_FIELDS)
#undef QORVI_ADD_PLAN_GROUP_RESPONSE_FIELDS

#define QORVI_UPDATE_PLAN_GROUP_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, Name) \
  FIELD(std::string, ID) \
  FIELD(bool, is_share_viewgroup)
QORVI_RECORD(UpdatePlanGroupRequest, QORVI_UPDATE_PLAN_GROUP_REQUEST_FIELDS)
#undef QORVI_UPDATE_PLAN_GROUP_REQUEST_FIELDS

#define QORVI_UPDATE_PLAN_GROUP_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo)
QORVI_RECORD(UpdatePlanGroupResponse, QORVI_UPDATE_PLAN_GROUP_RESPONSE_FIELDS)
#undef QORVI_UPDATE_PLAN_GROUP_RESPONSE_FIELDS

#define QORVI_DELETE_PLAN_GROUP_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, ID) \
  FIELD(std::string, GroupName) \
  FIELD(int, Type)
QORVI_RECORD(DeletePlanGroupRequest, QORVI_DELETE_PLAN_GROUP_REQUEST_FIELDS)
#undef QORVI_DELETE_PLAN_GROUP_REQUEST_FIELDS

#define QORVI_DELETE_PLAN_GROUP_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo)
QORVI_RECORD(DeletePlanGroupResponse, QORVI_DELETE_PLAN_GROUP_RESPONSE_FIELDS)
#undef QORVI_DELETE_PLAN_GROUP_RESPONSE_FIELDS

#define QORVI_GET_PLANS_IN_GROUP_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, GroupID) \
  FIELD(int, Type) \
  FIELD(bool, resource_download_judge)
QORVI_RECORD(GetPlansInGroupRequest, QORVI_GET_PLANS_IN_GROUP_REQUEST_FIELDS)
#undef QORVI_GET_PLANS_IN_GROUP_REQUEST_FIELDS

#define QORVI_GET_PLANS_IN_GROUP_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo) \
  FIELD(int, Total) \
  FIELD(std::vector<PlanBasicInfo>, Plans)
QORVI_RECORD(GetPlansInGroupResponse, QORVI_GET_PLANS_IN_GROUP_RESPONSE_FIELDS)
#undef QORVI_GET_PLANS_IN_GROUP_RESPONSE_FIELDS

#define QORVI_ADD_PLAN_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, GroupID) \
  FIELD(std::string, GroupName) \
  FIELD(std::string, Name) \
  FIELD(int, Type) \
  FIELD(int, AutoCycle) \
  FIELD(int, RoundTime) \
  FIELD(std::string, Remark) \
  FIELD(int, AutoRun) \
  FIELD(std::string, PlanStartTime) \
  FIELD(std::string, PlanEndTime) \
  FIELD(std::string, OwnerId) \
  FIELD(std::vector<PlanPage>, PlanPages)
QORVI_RECORD(AddPlanRequest, QORVI_ADD_PLAN_REQUEST_FIELDS)
#undef QORVI_ADD_PLAN_REQUEST_FIELDS

#define QORVI_ADD_PLAN_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo) \
  FIELD(std::string, ID)
QORVI_RECORD(AddPlanResponse, QORVI_ADD_PLAN_RESPONSE_FIELDS)
#undef QORVI_ADD_PLAN_RESPONSE_FIELDS

#define QORVI_UPDATE_PLAN_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, GroupID) \
  FIELD(std::string, GroupName) \
  FIELD(std::string, ID) \
  FIELD(std::string, Name) \
  FIELD(std::string, OwnerId) \
  FIELD(int, Type) \
  FIELD(int, AutoCycle) \
  FIELD(int, RoundTime) \
  FIELD(std::string, Remark) \
  FIELD(int, AutoRun) \
  FIELD(std::string, PlanStartTime) \
  FIELD(std::string, PlanEndTime) \
  FIELD(std::vector<PlanPage>, PlanPages) \
  FIELD(bool, is_share_view)
QORVI_RECORD(UpdatePlanRequest, QORVI_UPDATE_PLAN_REQUEST_FIELDS)
#undef QORVI_UPDATE_PLAN_REQUEST_FIELDS

#define QORVI_UPDATE_PLAN_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo)
QORVI_RECORD(UpdatePlanResponse, QORVI_UPDATE_PLAN_RESPONSE_FIELDS)
#undef QORVI_UPDATE_PLAN_RESPONSE_FIELDS

#define QORVI_DELETE_PLAN_RESQUEST_FIELDS(FIELD) \
  FIELD(std::string, ID) \
  FIELD(std::string, Name) \
  FIELD(std::string, GroupID) \
  FIELD(std::string, GroupName) \
  FIELD(std::string, UserID)
QORVI_RECORD(DeletePlanResquest, QORVI_DELETE_PLAN_RESQUEST_FIELDS)
#undef QORVI_DELETE_PLAN_RESQUEST_FIELDS

#define QORVI_DELETE_PLAN_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo)
QORVI_RECORD(DeletePlanResponse, QORVI_DELETE_PLAN_RESPONSE_FIELDS)
#undef QORVI_DELETE_PLAN_RESPONSE_FIELDS

#define QORVI_GET_PLAN_DETAIL_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, ID) \
  FIELD(int, AutoRun) \
  FIELD(std::string, PermissionItem) \
  FIELD(bool, NeedResourceName, true) \
  FIELD(bool, resource_download_judge)
QORVI_RECORD(GetPlanDetailRequest, QORVI_GET_PLAN_DETAIL_REQUEST_FIELDS)
#undef QORVI_GET_PLAN_DETAIL_REQUEST_FIELDS

#define QORVI_GET_PLAN_DETAIL_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo) \
  FIELD(std::string, GroupID) \
  FIELD(std::string, ID) \
  FIELD(std::string, Name) \
  FIELD(int, Type) \
  FIELD(int, AutoCycle) \
  FIELD(int, RoundTime) \
  FIELD(std::string, AppCode) \
  FIELD(std::string, Remark) \
  FIELD(std::string, OwnerId) \
  FIELD(std::string, CreateTime) \
  FIELD(int, AutoRun) \
  FIELD(std::string, PlanStartTime) \
  FIELD(std::string, PlanEndTime) \
  FIELD(std::vector<PlanPage>, PlanPages) \
  FIELD(bool, is_share_view) \
  FIELD(std::string, share_user_name)
QORVI_RECORD(GetPlanDetailResponse, QORVI_GET_PLAN_DETAIL_RESPONSE_FIELDS)
#undef QORVI_GET_PLAN_DETAIL_RESPONSE_FIELDS

#define QORVI_GET_PLAN_CONFIG_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, request)
QORVI_RECORD(GetPlanConfigRequest, QORVI_GET_PLAN_CONFIG_REQUEST_FIELDS)
#undef QORVI_GET_PLAN_CONFIG_REQUEST_FIELDS

// What the library supports.
#define QORVI_GET_PLAN_CONFIG_RESPONSE_FIELDS(FIELD) \
  FIELD(bool, LoadAll) \
  FIELD(bool, CreateRootPlan) \
  FIELD(bool, EnableSearch, true) \
  FIELD(bool, EnableDrag, true) \
  FIELD(bool, SupportDelPlanWithChildren, true) \
  FIELD(int, ViewOrPlan) \
  FIELD(bool, SupportTimedPlay) \
  FIELD(bool, OnlyCamera) \
  FIELD(bool, MoveBetweenPublicAndPrivate) \
  FIELD(bool, SupportAddCameraFromFavorite) \
  FIELD(bool, SupportSmoothStream, true) \
  FIELD(bool, ShowCreationInfo) \
  FIELD(bool, IsSupportSaveSingleCycle) \
  FIELD(bool, SupportThumbnail, true) \
  FIELD(bool, SupportPlanGroupCycle)
QORVI_RECORD(GetPlanConfigResponse, QORVI_GET_PLAN_CONFIG_RESPONSE_FIELDS)
#undef QORVI_GET_PLAN_CONFIG_RESPONSE_FIELDS

// No exchange uses this record or the three after it.
#define QORVI_PLAN_SEARCH_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, keyword) \
  FIELD(int, publicFlag)
QORVI_RECORD(PlanSearchRequest, QORVI_PLAN_SEARCH_REQUEST_FIELDS)
#undef QORVI_PLAN_SEARCH_REQUEST_FIELDS

#define QORVI_PLAN_SEARCH_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo) \
  FIELD(int, total) \
  FIELD(std::vector<SearchedPlan>, searchedPlan)
QORVI_RECORD(PlanSearchResponse, QORVI_PLAN_SEARCH_RESPONSE_FIELDS)
#undef QORVI_PLAN_SEARCH_RESPONSE_FIELDS

#define QORVI_INDEX_CODE_START_REQUEST_FIELDS(FIELD) \
  FIELD(std::string, IndexCode) \
  FIELD(bool, Start) \
  FIELD(bool, Success)
QORVI_RECORD(IndexCodeStartRequest, QORVI_INDEX_CODE_START_REQUEST_FIELDS)
#undef QORVI_INDEX_CODE_START_REQUEST_FIELDS

#define QORVI_INDEX_CODE_START_RESPONSE_FIELDS(FIELD) \
  FIELD(std::string, ErrorInfo)
QORVI_RECORD(IndexCodeStartResponse, QORVI_INDEX_CODE_START_RESPONSE_FIELDS)
#undef QORVI_INDEX_CODE_START_RESPONSE_FIELDS

// clang-format on

}  // namespace QorviViewPlugin_view_plugin_protocol
