// SPDX-License-Identifier: Apache-2.0
#include <map>
#include <set>

#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/FirstLoad.h"
#include "QorviViewPlugin/PlanConversion.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "ResourceStore/DownloadResource.h"

namespace {

using namespace QorviViewPlugin;
using namespace QorviViewPlugin_view_plugin_protocol;
using Vant::Base::Error::ErrorCode;

// Kinds of element whose names are fetched, in the order of the requests.
constexpr comm_method::ResourceType kNamedTypes[] = {
    comm_method::ResourceTypeCamera, comm_method::ResourceTypeDoor,        comm_method::ResourceTypeElevator,
    comm_method::ResourceTypeRadar,  comm_method::ResourceTypeElement2004, comm_method::ResourceTypeElement1027};

void EnsureLoaded() {
  AwaitDownload();
  std::string unusedResponse;
  if (!IsViewGroupLoadDone()) IsInitViewGroupFinish("", unusedResponse);
  if (!IsViewLoadDone()) IsInitViewFinish("", unusedResponse);
}

// Has the platform fetch the elements that the view shows. The first failure ends it: false, and why.
bool FetchNames(const ViewInfo& view, ErrorCode& error) {
  std::map<int, std::set<unsigned>> idsByType;
  for (const ViewPage& page : view.vcPages) {
    for (const CameraGridStruct& window : page.vcWindows) {
      idsByType[window.enum_resource_type_].insert(window.id_element_);
    }
  }
  auto& downloads = Vant::Base::CSingleton<ResourceStore::CDownloadResourceStore>::Instance();
  for (const comm_method::ResourceType type : kNamedTypes) {
    const auto ids = idsByType.find(type);
    if (ids == idsByType.end()) continue;
    auto request = std::make_shared<ResourceStore::CDownloadLogicalResource>();
    request->SetVal_extra_ids(ids->second);
    request->SetVal_source_type({type});
    request->SetVal_extra_request_type(ResourceStore::ExtraRequestTypeElementIds);
    error = ErrorCode();
    if (!downloads.SynIncrementalDownloadLogicalResource(error, request)) return false;
  }
  return true;
}

void FillViewFields(const ViewInfo& view, GetPlanDetailResponse& response) {
  response.GroupID = IntToString(AsSigned(view.idViewGroup));
  response.ID = IntToString(AsSigned(view.idView));
  response.Name = view.strName;
  response.Type = view.enumViewType;
  response.AutoCycle = view.nAutoCycle;
  response.RoundTime = view.nCycleTime;
  response.AppCode = view.strGUID;
  response.AutoRun = 0;
  response.is_share_view = view.bShared;
  response.share_user_name = view.strSharedUserName;
}

}  // namespace

bool GetPlanDetail(const std::string& request, std::string& response) {
  return RunExchange<GetPlanDetailRequest, GetPlanDetailResponse>(
      request, response, [](const GetPlanDetailRequest& from, GetPlanDetailResponse& to) {
        if (from.resource_download_judge) EnsureLoaded();
        const auto view = Manager().GetViewByID(StringToUInt(from.ID));
        if (!view) {
          to.ErrorInfo = Translated("NYyjnxIZwFAorxuFXv");
          return;
        }
        const std::shared_ptr<const ViewInfo> info = view->Info();
        FillViewFields(*info, to);
        if (from.NeedResourceName) {
          ErrorCode error;
          if (!FetchNames(*info, error)) {
            to.ErrorInfo = ErrorTextOf(error);
            return;
          }
        }
        const ResourceNames names = from.NeedResourceName ? ResourceNames::Filled : ResourceNames::Empty;
        for (const ViewPage& page : info->vcPages) {
          if (!page.vcWindows.empty()) to.PlanPages.push_back(ToHost(page, names));
        }
      });
}
