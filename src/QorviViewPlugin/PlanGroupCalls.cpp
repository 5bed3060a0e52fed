// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/HostIds.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"

namespace QorviViewPlugin {
namespace {

using Vant::Base::Error::ErrorCode;

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
    protocol::PlanGroup group;
    group.Name = Translated(folder.nameKey);
    group.ParentID = "-1";
    group.ID = "-1";
    group.Type = folder.type;
    response.PlanGroups.push_back(std::move(group));
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
    protocol::PlanGroup entry;
    entry.Name = info->strName;
    entry.ParentID = IntToString(AsSigned(info->idParent));
    entry.ID = IntToString(AsSigned(info->idViewGroup));
    entry.Type = info->enumViewType;
    entry.is_share_viwgroup = info->bShared;
    response.PlanGroups.push_back(std::move(entry));
  }
}

void AnswerAddPlanGroup(const protocol::AddPlanGroupRequest& request, protocol::AddPlanGroupResponse& response) {
  ViewGroupInfo info;
  info.idParent = TopLevelAsNone(StringToUInt(request.ParentID));
  info.strName = request.Name;
  info.enumViewType = request.Type;
  info.bShared = request.is_share_viewgroup;
  info.idUser = OwnerForType(request.Type);
  info.nMethod = ChangeAdded;

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

bool GetPlanGroups(const std::string& request, std::string& response) {
  return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::AnswerGetPlanGroups);
}

bool AddPlanGroup(const std::string& request, std::string& response) {
  return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::AnswerAddPlanGroup);
}

bool UpdatePlanGroup(const std::string& request, std::string& response) {
  return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::AnswerUpdatePlanGroup);
}

bool DeletePlanGroup(const std::string& request, std::string& response) {
  return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::AnswerDeletePlanGroup);
}
