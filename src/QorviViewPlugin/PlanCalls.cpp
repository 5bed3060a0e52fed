// SPDX-License-Identifier: Apache-2.0
#include <QString>
#include <algorithm>
#include <utility>

#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/HostIds.h"
#include "QorviViewPlugin/PlanConversion.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewDownload.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "VeltControl/VeltControl.h"

namespace QorviViewPlugin {
namespace {

using Views = std::vector<std::shared_ptr<CView>>;

protocol::PlanBasicInfo ToPlanBasicInfo(const ViewInfo& view) {
  return {.name = view.strName,
          .ID = IntToString(AsSigned(view.idView)),
          .ParentID = IntToString(AsSigned(view.idViewGroup)),
          .Type = view.enumViewType,
          .is_share_view = view.bShared};
}

// The plans in the order of the platform's name comparison. Names are made into its strings once each, not once per
// comparison.
std::vector<protocol::PlanBasicInfo> SortedPlans(const Views& views) {
  std::vector<std::pair<QString, protocol::PlanBasicInfo>> named;
  named.reserve(views.size());
  for (const auto& view : views) {
    auto entry = ToPlanBasicInfo(*view->Info());
    QString name = VeltControl::StringToQString(entry.name);
    named.emplace_back(std::move(name), std::move(entry));
  }
  std::sort(named.begin(), named.end(), [](const auto& left, const auto& right) {
    return VeltControl::CStandardItemModel::CustomStringCompare(left.first, right.first,
                                                                VeltControl::CStandardItemModel::SortByName);
  });
  std::vector<protocol::PlanBasicInfo> plans;
  plans.reserve(named.size());
  for (auto& [name, entry] : named) plans.push_back(std::move(entry));
  return plans;
}

void AnswerGetPlansInGroup(const protocol::GetPlansInGroupRequest& request,
                           protocol::GetPlansInGroupResponse& response) {
  if (request.resource_download_judge) WaitForViewDownload();

  Views views;
  const unsigned int groupId = TopLevelAsNone(StringToUInt(request.GroupID));
  if (groupId == kNoId) {
    // "Total" stays 0 here, whatever is found.
    Manager().GetViewsWithoutGroup(views);
    std::erase_if(views, [&](const auto& view) { return view->GetViewType() != request.Type; });
  } else if (const auto group = Manager().GetViewGroupByID(groupId)) {
    group->GetMemberViews(views);
    response.Total = static_cast<int>(views.size());
  } else {
    response.ErrorInfo = Translated("KaBeAUoxlQkKBOqwV");
  }
  response.Plans = SortedPlans(views);
}

bool AnswerGetPlanConfig(const protocol::GetPlanConfigRequest&, protocol::GetPlanConfigResponse& response) {
  // Beside those that are on by the record's own defaults.
  response.LoadAll = true;
  response.CreateRootPlan = true;
  response.IsSupportSaveSingleCycle = true;
  response.SupportPlanGroupCycle = true;
  return true;
}

// What adding and changing a plan have in common.
template <class Request>
ViewInfo ToViewInfo(const Request& request) {
  ViewInfo info;
  info.strName = request.Name;
  info.enumViewType = request.Type;
  info.idUser = OwnerForType(request.Type);
  info.nAutoCycle = request.AutoCycle;
  info.nCycleTime = request.RoundTime;
  info.vcPages.reserve(request.PlanPages.size());
  for (const auto& page : request.PlanPages) info.vcPages.push_back(ToViewPage(page));
  return info;
}

void AnswerAddPlan(const protocol::AddPlanRequest& request, protocol::AddPlanResponse& response) {
  ViewInfo info = ToViewInfo(request);
  // Of the host's ids for the top of the tree only -2 is read as none here.
  const unsigned int groupId = StringToUInt(request.GroupID);
  info.idViewGroup = groupId == kHostTopLevel ? kNoId : groupId;

  unsigned int newId = kNoId;
  ErrorCode error;
  if (!Manager().AddView(info, newId, error)) response.ErrorInfo = TextOf(error);
  response.ID = IntToString(AsSigned(newId));
}

void AnswerUpdatePlan(const protocol::UpdatePlanRequest& request, protocol::UpdatePlanResponse& response) {
  ViewInfo info = ToViewInfo(request);
  info.nMethod = ChangeModified;
  info.idView = StringToUInt(request.ID);
  info.idViewGroup = TopLevelAsNone(StringToUInt(request.GroupID));
  info.bShared = request.is_share_view;

  ErrorCode error;
  if (!Manager().ModifyView(info, error)) response.ErrorInfo = TextOf(error);
}

void AnswerDeletePlan(const protocol::DeletePlanResquest& request, protocol::DeletePlanResponse& response) {
  ErrorCode error;
  if (!Manager().DeleteView(StringToUInt(request.ID), error)) response.ErrorInfo = TextOf(error);
}

}  // namespace
}  // namespace QorviViewPlugin

QORVI_EXCHANGE(GetPlansInGroup)
QORVI_EXCHANGE(GetPlanConfig)
QORVI_EXCHANGE(AddPlan)
QORVI_EXCHANGE(UpdatePlan)
QORVI_EXCHANGE(DeletePlan)
