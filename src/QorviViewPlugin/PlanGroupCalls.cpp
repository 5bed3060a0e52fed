// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/PlanConversion.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"

namespace {

using namespace QorviViewPlugin;
using namespace QorviViewPlugin_view_plugin_protocol;
using Vant::Base::Error::ErrorCode;

// The three top-level folders, which no server knows.
void ListTopLevel(GetPlanGroupsResponse& response) {
  static constexpr const char* kNameKeys[] = {"PublicView", "PrivateView",
                                              "Qorvi-Quellan.cb64d4b556f94f928e4082f241a47a7c.name"};
  int type = ViewTypePublic;
  for (const char* key : kNameKeys) {
    PlanGroup& folder = response.PlanGroups.emplace_back();
    folder.Name = Translated(key);
    folder.ParentID = "-1";
    folder.ID = "-1";
    folder.Type = type++;
  }
  response.Total = 3;
}

void ListChildren(const GetPlanGroupsRequest& request, GetPlanGroupsResponse& response) {
  std::vector<std::shared_ptr<CViewGroup>> groups;
  if (!Manager().GetViewGroups(groups, FoldBothTopLevels(StringToUInt(request.ParentID)))) {
    response.ErrorInfo = Translated("KaBeAUoxlQkKBOqwV");
  }
  // All children are counted, of whatever type; only those of the asked type are listed.
  response.Total = static_cast<int>(groups.size());
  for (const auto& group : groups) {
    const auto info = group->Info();
    if (info->enumViewType != request.GroupType) continue;
    PlanGroup& entry = response.PlanGroups.emplace_back();
    entry.Name = info->strName;
    entry.ParentID = IntToString(AsSigned(info->idParent));
    entry.ID = IntToString(AsSigned(info->idViewGroup));
    entry.Type = info->enumViewType;
    entry.is_share_viwgroup = info->bShared;
  }
}

}  // namespace

bool GetPlanGroups(const std::string& request, std::string& response) {
  return RunExchange<GetPlanGroupsRequest, GetPlanGroupsResponse>(
      request, response, [](const GetPlanGroupsRequest& from, GetPlanGroupsResponse& to) {
        if (from.ParentID == "root") {
          ListTopLevel(to);
        } else {
          ListChildren(from, to);
        }
      });
}

bool AddPlanGroup(const std::string& request, std::string& response) {
  return RunExchange<AddPlanGroupRequest, AddPlanGroupResponse>(
      request, response, [](const AddPlanGroupRequest& from, AddPlanGroupResponse& to) {
        ViewGroupInfo group;
        group.idParent = FoldBothTopLevels(StringToUInt(from.ParentID));
        group.strName = from.Name;
        group.nMethod = ChangeAdded;
        group.enumViewType = from.Type;
        group.bShared = from.is_share_viewgroup;
        group.idUser = OwnerOfType(from.Type);
        unsigned int newId = kNoId;
        ErrorCode error;
        if (!Manager().AddViewGroup(group, newId, error)) to.ErrorInfo = ErrorTextOf(error);
        to.ID = IntToString(AsSigned(newId));
      });
}

bool UpdatePlanGroup(const std::string& request, std::string& response) {
  return RunExchange<UpdatePlanGroupRequest, UpdatePlanGroupResponse>(
      request, response, [](const UpdatePlanGroupRequest& from, UpdatePlanGroupResponse& to) {
        ViewGroupInfo group;
        group.idViewGroup = StringToUInt(from.ID);
        group.strName = from.Name;
        group.bShared = from.is_share_viewgroup;
        ErrorCode error;
        if (!Manager().ModifyViewGroup(group, error)) to.ErrorInfo = ErrorTextOf(error);
      });
}

bool DeletePlanGroup(const std::string& request, std::string& response) {
  return RunExchange<DeletePlanGroupRequest, DeletePlanGroupResponse>(
      request, response, [](const DeletePlanGroupRequest& from, DeletePlanGroupResponse& to) {
        ErrorCode error;
        if (!Manager().DeleteViewGroup(StringToUInt(from.ID), error)) to.ErrorInfo = ErrorTextOf(error);
      });
}
