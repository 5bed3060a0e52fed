// SPDX-License-Identifier: Apache-2.0
// Requests and responses of the plan-group and plan calls, and the elements of their lists. Names of records and keys
// are the host's, letter for letter; "ErrorInfo" is empty on success.
#pragma once

#include "QorviViewPlugin/protocol/PlanContent.h"

namespace QorviViewPlugin_view_plugin_protocol {

// --- List elements

#define QORVI_PLAN_GROUP(FIELD) \
  FIELD(Text, Name)             \
  FIELD(Text, ParentID)         \
  FIELD(Text, ID)               \
  FIELD(Integer, Type)          \
  FIELD(Boolean, is_share_viwgroup)
QORVI_RECORD(PlanGroup, QORVI_PLAN_GROUP)

#define QORVI_PLAN_BASIC_INFO(FIELD) \
  FIELD(Text, name)                  \
  FIELD(Text, Remark)                \
  FIELD(Text, ID)                    \
  FIELD(Text, ParentID)              \
  FIELD(Integer, Type)               \
  FIELD(Boolean, is_share_view)
QORVI_RECORD(PlanBasicInfo, QORVI_PLAN_BASIC_INFO)

#define QORVI_SEARCHED_PLAN(FIELD) \
  FIELD(Text, indexCode)           \
  FIELD(Text, name)                \
  FIELD(Text, hightlightName)      \
  FIELD(Integer, roundTime)        \
  FIELD(Text, remark)              \
  FIELD(Text, presetDocType)       \
  FIELD(Text, uploadPresetDoc)     \
  FIELD(Text, appCode)             \
  FIELD(Text, ownerId)             \
  FIELD(Text, flag)                \
  FIELD(Text, autoRun)             \
  FIELD(Text, planStartTime)       \
  FIELD(Text, planEndTime)
QORVI_RECORD(SearchedPlan, QORVI_SEARCHED_PLAN)

// A response that holds nothing but the error text.
#define QORVI_ERROR_INFO_ONLY(FIELD) FIELD(Text, ErrorInfo)
// A response that answers the id of what was added.
#define QORVI_ERROR_INFO_AND_ID(FIELD) \
  FIELD(Text, ErrorInfo)               \
  FIELD(Text, ID)

// --- Plan groups

#define QORVI_GET_PLAN_GROUPS_REQUEST(FIELD) \
  FIELD(Text, ParentID)                      \
  FIELD(Integer, GroupType)
QORVI_RECORD(GetPlanGroupsRequest, QORVI_GET_PLAN_GROUPS_REQUEST)

#define QORVI_GET_PLAN_GROUPS_RESPONSE(FIELD) \
  FIELD(Text, ErrorInfo)                      \
  FIELD(Integer, Total)                       \
  FIELD(Sequence<PlanGroup>, PlanGroups)
QORVI_RECORD(GetPlanGroupsResponse, QORVI_GET_PLAN_GROUPS_RESPONSE)

#define QORVI_ADD_PLAN_GROUP_REQUEST(FIELD) \
  FIELD(Text, Name)                         \
  FIELD(Text, ParentID)                     \
  FIELD(Integer, Type)                      \
  FIELD(Boolean, is_share_viewgroup)
QORVI_RECORD(AddPlanGroupRequest, QORVI_ADD_PLAN_GROUP_REQUEST)
QORVI_RECORD(AddPlanGroupResponse, QORVI_ERROR_INFO_AND_ID)
inline void MarkFailed(AddPlanGroupResponse& response) {
  response.ID = "-1";
}

#define QORVI_UPDATE_PLAN_GROUP_REQUEST(FIELD) \
  FIELD(Text, Name)                            \
  FIELD(Text, ID)                              \
  FIELD(Boolean, is_share_viewgroup)
QORVI_RECORD(UpdatePlanGroupRequest, QORVI_UPDATE_PLAN_GROUP_REQUEST)
QORVI_RECORD(UpdatePlanGroupResponse, QORVI_ERROR_INFO_ONLY)

#define QORVI_DELETE_PLAN_GROUP_REQUEST(FIELD) \
  FIELD(Text, ID)                              \
  FIELD(Text, GroupName)                       \
  FIELD(Integer, Type)
QORVI_RECORD(DeletePlanGroupRequest, QORVI_DELETE_PLAN_GROUP_REQUEST)
QORVI_RECORD(DeletePlanGroupResponse, QORVI_ERROR_INFO_ONLY)

// --- Plans

#define QORVI_GET_PLANS_IN_GROUP_REQUEST(FIELD) \
  FIELD(Text, GroupID)                          \
  FIELD(Integer, Type)                          \
  FIELD(Boolean, resource_download_judge)
QORVI_RECORD(GetPlansInGroupRequest, QORVI_GET_PLANS_IN_GROUP_REQUEST)

#define QORVI_GET_PLANS_IN_GROUP_RESPONSE(FIELD) \
  FIELD(Text, ErrorInfo)                         \
  FIELD(Integer, Total)                          \
  FIELD(Sequence<PlanBasicInfo>, Plans)
QORVI_RECORD(GetPlansInGroupResponse, QORVI_GET_PLANS_IN_GROUP_RESPONSE)

#define QORVI_ADD_PLAN_REQUEST(FIELD) \
  FIELD(Text, GroupID)                \
  FIELD(Text, GroupName)              \
  FIELD(Text, Name)                   \
  FIELD(Integer, Type)                \
  FIELD(Integer, AutoCycle)           \
  FIELD(Integer, RoundTime)           \
  FIELD(Text, Remark)                 \
  FIELD(Integer, AutoRun)             \
  FIELD(Text, PlanStartTime)          \
  FIELD(Text, PlanEndTime)            \
  FIELD(Text, OwnerId)                \
  FIELD(Sequence<PlanPage>, PlanPages)
QORVI_RECORD(AddPlanRequest, QORVI_ADD_PLAN_REQUEST)
QORVI_RECORD(AddPlanResponse, QORVI_ERROR_INFO_AND_ID)
inline void MarkFailed(AddPlanResponse& response) {
  response.ID = "-1";
}

#define QORVI_UPDATE_PLAN_REQUEST(FIELD) \
  FIELD(Text, GroupID)                   \
  FIELD(Text, GroupName)                 \
  FIELD(Text, ID)                        \
  FIELD(Text, Name)                      \
  FIELD(Text, OwnerId)                   \
  FIELD(Integer, Type)                   \
  FIELD(Integer, AutoCycle)              \
  FIELD(Integer, RoundTime)              \
  FIELD(Text, Remark)                    \
  FIELD(Integer, AutoRun)                \
  FIELD(Text, PlanStartTime)             \
  FIELD(Text, PlanEndTime)               \
  FIELD(Sequence<PlanPage>, PlanPages)   \
  FIELD(Boolean, is_share_view)
QORVI_RECORD(UpdatePlanRequest, QORVI_UPDATE_PLAN_REQUEST)
QORVI_RECORD(UpdatePlanResponse, QORVI_ERROR_INFO_ONLY)

#define QORVI_DELETE_PLAN_RESQUEST(FIELD) \
  FIELD(Text, ID)                         \
  FIELD(Text, Name)                       \
  FIELD(Text, GroupID)                    \
  FIELD(Text, GroupName)                  \
  FIELD(Text, UserID)
QORVI_RECORD(DeletePlanResquest, QORVI_DELETE_PLAN_RESQUEST)
QORVI_RECORD(DeletePlanResponse, QORVI_ERROR_INFO_ONLY)

// A request that leaves "NeedResourceName" out asks for the names.
#define QORVI_GET_PLAN_DETAIL_REQUEST(FIELD) \
  FIELD(Text, ID)                            \
  FIELD(Integer, AutoRun)                    \
  FIELD(Text, PermissionItem)                \
  FIELD(Boolean, NeedResourceName, true)     \
  FIELD(Boolean, resource_download_judge)
QORVI_RECORD(GetPlanDetailRequest, QORVI_GET_PLAN_DETAIL_REQUEST)

#define QORVI_GET_PLAN_DETAIL_RESPONSE(FIELD) \
  FIELD(Text, ErrorInfo)                      \
  FIELD(Text, GroupID)                        \
  FIELD(Text, ID)                             \
  FIELD(Text, Name)                           \
  FIELD(Integer, Type)                        \
  FIELD(Integer, AutoCycle)                   \
  FIELD(Integer, RoundTime)                   \
  FIELD(Text, AppCode)                        \
  FIELD(Text, Remark)                         \
  FIELD(Text, OwnerId)                        \
  FIELD(Text, CreateTime)                     \
  FIELD(Integer, AutoRun)                     \
  FIELD(Text, PlanStartTime)                  \
  FIELD(Text, PlanEndTime)                    \
  FIELD(Sequence<PlanPage>, PlanPages)        \
  FIELD(Boolean, is_share_view)               \
  FIELD(Text, share_user_name)
QORVI_RECORD(GetPlanDetailResponse, QORVI_GET_PLAN_DETAIL_RESPONSE)

#define QORVI_GET_PLAN_CONFIG_REQUEST(FIELD) FIELD(Text, request)
QORVI_RECORD(GetPlanConfigRequest, QORVI_GET_PLAN_CONFIG_REQUEST)

// The plugin's feature switches.
#define QORVI_GET_PLAN_CONFIG_RESPONSE(FIELD)      \
  FIELD(Boolean, LoadAll)                          \
  FIELD(Boolean, CreateRootPlan)                   \
  FIELD(Boolean, EnableSearch, true)               \
  FIELD(Boolean, EnableDrag, true)                 \
  FIELD(Boolean, SupportDelPlanWithChildren, true) \
  FIELD(Integer, ViewOrPlan)                       \
  FIELD(Boolean, SupportTimedPlay)                 \
  FIELD(Boolean, OnlyCamera)                       \
  FIELD(Boolean, MoveBetweenPublicAndPrivate)      \
  FIELD(Boolean, SupportAddCameraFromFavorite)     \
  FIELD(Boolean, SupportSmoothStream, true)        \
  FIELD(Boolean, ShowCreationInfo)                 \
  FIELD(Boolean, IsSupportSaveSingleCycle)         \
  FIELD(Boolean, SupportThumbnail, true)           \
  FIELD(Boolean, SupportPlanGroupCycle)
QORVI_RECORD(GetPlanConfigResponse, QORVI_GET_PLAN_CONFIG_RESPONSE)

// --- Records that no exported function uses; they belong to the host's record set.

#define QORVI_PLAN_SEARCH_REQUEST(FIELD) \
  FIELD(Text, keyword)                   \
  FIELD(Integer, publicFlag)
QORVI_RECORD(PlanSearchRequest, QORVI_PLAN_SEARCH_REQUEST)

#define QORVI_PLAN_SEARCH_RESPONSE(FIELD) \
  FIELD(Text, ErrorInfo)                  \
  FIELD(Integer, total)                   \
  FIELD(Sequence<SearchedPlan>, searchedPlan)
QORVI_RECORD(PlanSearchResponse, QORVI_PLAN_SEARCH_RESPONSE)

#define QORVI_INDEX_CODE_START_REQUEST(FIELD) \
  FIELD(Text, IndexCode)                      \
  FIELD(Boolean, Start)                       \
  FIELD(Boolean, Success)
QORVI_RECORD(IndexCodeStartRequest, QORVI_INDEX_CODE_START_REQUEST)
QORVI_RECORD(IndexCodeStartResponse, QORVI_ERROR_INFO_ONLY)

}  // namespace QorviViewPlugin_view_plugin_protocol
