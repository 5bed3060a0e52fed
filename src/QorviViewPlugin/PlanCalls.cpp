// SPDX-License-Identifier: Apache-2.0
#include <QString>
#include <algorithm>
#include <utility>
#include <vector>

#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/PlanConversion.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "VeltControl/VeltControl.h"

namespace {

using namespace QorviViewPlugin;
using namespace QorviViewPlugin_view_plugin_protocol;
using Vant::Base::Error::ErrorCode;

PlanBasicInfo BasicInfoOf(const ViewInfo& view) {
  PlanBasicInfo entry;
  entry.name = view.strName;
  entry.ID = IntToString(AsSigned(view.idView));
  entry.ParentID = IntToString(AsSigned(view.idViewGroup));
  entry.Type = view.enumViewType;
  entry.is_share_view = view.bShared;
  return entry;
}

// The views in no group, of one type. They are not counted in "Total".
void ListWithoutGroup(int type, GetPlansInGroupResponse& response) {
  std::vector<std::shared_ptr<CView>> views;
  Manager().GetViewsWithoutGroup(views);
  for (const auto& view : views) {
    const auto info = view->Info();
    if (info->enumViewType == type) response.Plans.push_back(BasicInfoOf(*info));
  }
}

// All members of a group, of whatever type.
void ListMembers(unsigned int groupId, GetPlansInGroupResponse& response) {
  const auto group = Manager().GetViewGroupByID(groupId);
  if (!group) {
    response.ErrorInfo = Translated("KaBeAUoxlQkKBOqwV");
    return;
  }
  std::vector<std::shared_ptr<CView>> views;
  group->GetMemberViews(views);
  response.Total = static_cast<int>(views.size());
  response.Plans.reserve(views.size());
  for (const auto& view : views) response.Plans.push_back(BasicInfoOf(*view->Info()));
}

void SortByName(std::vector<PlanBasicInfo>& plans) {
  using Model = VeltControl::CStandardItemModel;
  std::vector<std::pair<QString, size_t>> order;
  order.reserve(plans.size());
  for (size_t i = 0; i < plans.size(); ++i) order.emplace_back(VeltControl::StringToQString(plans[i].name), i);
  std::sort(order.begin(), order.end(), [](const auto& left, const auto& right) {
    return Model::CustomStringCompare(left.first, right.first, Model::SortByName);
  });
  std::vector<PlanBasicInfo> sorted;
  sorted.reserve(plans.size());
  for (const auto& [name, i] : order) sorted.push_back(std::move(plans[i]));
  plans = std::move(sorted);
}

// What AddPlan and UpdatePlan read alike.
template <class Request>
ViewInfo ViewOf(const Request& request, ChangeMethod method) {
  ViewInfo view;
  view.nMethod = method;
  view.enumViewType = request.Type;
  view.idUser = OwnerOfType(request.Type);
  view.strName = request.Name;
  view.nAutoCycle = request.AutoCycle;
  view.nCycleTime = request.RoundTime;
  view.vcPages.reserve(request.PlanPages.size());
  for (const PlanPage& page : request.PlanPages) view.vcPages.push_back(ToModel(page));
  return view;
}

}  // namespace

bool GetPlansInGroup(const std::string& request, std::string& response) {
  return RunExchange<GetPlansInGroupRequest, GetPlansInGroupResponse>(
      request, response, [](const GetPlansInGroupRequest& from, GetPlansInGroupResponse& to) {
        if (from.resource_download_judge) AwaitDownload();
        const unsigned int groupId = StringToUInt(from.GroupID);
        if (FoldBothTopLevels(groupId) == kNoId) {
          ListWithoutGroup(from.Type, to);
        } else {
          ListMembers(groupId, to);
        }
        SortByName(to.Plans);
      });
}

bool GetPlanConfig(const std::string& request, std::string& response) {
  return RunExchange<GetPlanConfigRequest, GetPlanConfigResponse>(
      request, response, [](const GetPlanConfigRequest&, GetPlanConfigResponse& to) {
        to.LoadAll = true;
        to.CreateRootPlan = true;
        to.EnableSearch = true;
        to.EnableDrag = true;
        to.SupportDelPlanWithChildren = true;
        to.ViewOrPlan = 0;
        to.SupportTimedPlay = false;
        to.OnlyCamera = false;
        to.MoveBetweenPublicAndPrivate = false;
        to.SupportSmoothStream = true;
        to.IsSupportSaveSingleCycle = true;
        to.SupportThumbnail = true;
        to.SupportPlanGroupCycle = true;
        return true;
      });
}

bool AddPlan(const std::string& request, std::string& response) {
  return RunExchange<AddPlanRequest, AddPlanResponse>(
      request, response, [](const AddPlanRequest& from, AddPlanResponse& to) {
        ViewInfo view = ViewOf(from, ChangeAdded);
        view.idViewGroup = FoldFirstTopLevel(StringToUInt(from.GroupID));
        unsigned int newId = kNoId;
        ErrorCode error;
        if (!Manager().AddView(view, newId, error)) to.ErrorInfo = ErrorTextOf(error);
        to.ID = IntToString(AsSigned(newId));
      });
}

bool UpdatePlan(const std::string& request, std::string& response) {
  return RunExchange<UpdatePlanRequest, UpdatePlanResponse>(
      request, response, [](const UpdatePlanRequest& from, UpdatePlanResponse& to) {
        ViewInfo view = ViewOf(from, ChangeModified);
        view.idViewGroup = FoldBothTopLevels(StringToUInt(from.GroupID));
        view.bShared = from.is_share_view;
        view.idView = StringToUInt(from.ID);
        ErrorCode error;
        if (!Manager().ModifyView(view, error)) to.ErrorInfo = ErrorTextOf(error);
      });
}

bool DeletePlan(const std::string& request, std::string& response) {
  return RunExchange<DeletePlanResquest, DeletePlanResponse>(
      request, response, [](const DeletePlanResquest& from, DeletePlanResponse& to) {
        ErrorCode error;
        if (!Manager().DeleteView(StringToUInt(from.ID), error)) to.ErrorInfo = ErrorTextOf(error);
      });
}
