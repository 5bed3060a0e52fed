// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/HostIds.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"

namespace QorviViewPlugin {
namespace {

void AnswerTopFolders(protocol::GetPlanGroupsResponse& response) {
  static constexpr struct {
    const char* nameKey;
    ViewType type;
  } kFolders[] = {
      {"PublicView", ViewTypePublic},
      {"PrivateView", ViewTypePrivate},
      {"Qorvi-Quellan.cb64d4b556f94f928e4082f241a47a7c.name", ViewTypeShared},
  };
  for (const auto& folder : kFolders) {
    response.PlanGroups.push_back(
        {.Name = Translated(folder.nameKey), .ParentID = "-1", .ID = "-1", .Type = folder.type});
  }
  response.Total = static_cast<int>(response.PlanGroups.size());
}

void AnswerGetPlanGroups(const protocol::GetPlanGroupsRequest& request, protocol::GetPlanGroupsResponse& response) {
  if (request.ParentID == "root") return AnswerTopFolders(response);

  std::vector<std::shared_ptr<CViewGroup>> groups;
  if (!Manager().GetViewGroups(groups, TopLevelAsNone(StringToUInt(request.ParentID)))) {
    response.ErrorInfo = Translated("KaBeAUoxlQkKBOqwV");
  }
  // The host counts on the total of all types, while the list holds those of one.
  response.Total = static_cast<int>(groups.size());
  for (const auto& group : groups) {
    const auto info = group->Info();
    if (info->enumViewType != request.GroupType) continue;
    response.PlanGroups.push_back({.Name = info->strName,
                                   .ParentID = IntToString(AsSigned(info->idParent)),
                                   .ID = IntToString(AsSigned(info->idViewGroup)),
                                   .Type = info->enumViewType,
                                   .is_share_viwgroup = info->bShared});
  }
}

void AnswerAddPlanGroup(const protocol::AddPlanGroupRequest& request, protocol::AddPlanGroupResponse& response) {
  ViewGroupInfo info;
  info.idParent = TopLevelAsNone(StringToUInt(request.ParentID));
  info.strName = request.Name;
  info.enumViewType = request.Type;
  info.bShared = request.is_share_viewgroup;
  info.idUser = OwnerForType(request.Type);

  unsigned int newId = kNoId;
  ErrorCode error;
  if (!Manager().AddViewGroup(info, newId, error)) response.ErrorInfo = TextOf(error);
  response.ID = IntToString(AsSigned(newId));
}

void AnswerUpdatePlanGroup(const protocol::UpdatePlanGroupRequest& request,
                           protocol::UpdatePlanGroupResponse& response) {
  ViewGroupInfo info;
  info.idViewGroup = StringToUInt(request.ID);
  info.strName = request.Name;
  info.bShared = request.is_share_viewgroup;

  ErrorCode error;
  if (!Manager().ModifyViewGroup(info, error)) response.ErrorInfo = TextOf(error);
}

void AnswerDeletePlanGroup(const protocol::DeletePlanGroupRequest& request,
                           protocol::DeletePlanGroupResponse& response) {
  ErrorCode error;
  if (!Manager().DeleteViewGroup(StringToUInt(request.ID), error)) response.ErrorInfo = TextOf(error);
}

}  // namespace
}  // namespace QorviViewPlugin

QORVI_EXCHANGE(GetPlanGroups)
QORVI_EXCHANGE(AddPlanGroup)
QORVI_EXCHANGE(UpdatePlanGroup)
QORVI_EXCHANGE(DeletePlanGroup)
