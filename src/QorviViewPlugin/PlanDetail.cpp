// SPDX-License-Identifier: Apache-2.0
#include <set>

#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/FirstLoad.h"
#include "QorviViewPlugin/PlanConversion.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/base/TextConversion.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "ResourceStore/DownloadResource.h"
#include "ResourceStore/Element.h"

namespace QorviViewPlugin {
namespace {

const ResourceStore::CElementManager& Elements() {
  return Vant::Base::CSingleton<ResourceStore::CElementManager>::Instance();
}

// Has the platform fetch the elements of that kind; false with its error.
bool FetchElements(int type, const std::set<unsigned>& ids, ErrorCode& error) {
  error = ErrorCode();
  auto request = std::make_shared<ResourceStore::CDownloadLogicalResource>();
  request->SetVal_extra_ids(ids);
  request->SetVal_source_type({comm_method::ResourceType{type}});
  request->SetVal_extra_request_type(ResourceStore::ExtraRequestTypeElementIds);
  return Vant::Base::CSingleton<ResourceStore::CDownloadResourceStore>::Instance()
      .SynIncrementalDownloadLogicalResource(error, request);
}

// Has the platform fetch what the windows show, kind by kind. The first failure ends it: false with its error.
bool PreloadResourceNames(const ViewInfo& view, ErrorCode& error) {
  struct Wanted {
    ResourceType type;
    std::set<unsigned> ids;
  } kinds[] = {{ResourceTypeCamera, {}}, {ResourceTypeDoor, {}}, {ResourceTypeElevator, {}},
               {ResourceTypeRadar, {}},  {ResourceType2004, {}}, {ResourceType1027, {}}};
  for (const ViewPage& page : view.vcPages) {
    for (const CameraGridStruct& window : page.vcWindows) {
      for (Wanted& kind : kinds) {
        if (kind.type == window.enum_resource_type_) kind.ids.insert(window.id_element_);
      }
    }
  }
  for (const Wanted& kind : kinds) {
    if (!kind.ids.empty() && !FetchElements(kind.type, kind.ids, error)) return false;
  }
  return true;
}

std::string NameOf(const std::shared_ptr<ResourceStore::CElement>& element) {
  return element ? element->GetName() : std::string();
}

std::string ResourceNameOf(const CameraGridStruct& window) {
  switch (window.enum_resource_type_) {
    case ResourceTypeNone:
      return " ";
    case ResourceTypeCamera:
      return Elements().GetCameraElementName(window.id_element_);
    case ResourceTypeDoor:
      return Elements().GetDoorElementName(window.id_element_);
    case ResourceTypeElevator:
      return Elements().GetElevatorElementName(window.id_element_);
    case ResourceTypeRadar:
      return NameOf(Elements().FindRadarElementByID(window.id_element_));
    case ResourceType1027:
    case ResourceType2004:
      return NameOf(Elements().FindOtherElementByID(window.id_element_));
    case ResourceTypeEmap:
      return Translated("Map");
    case ResourceTypeWebPage:
      return window.extend_resource.empty() ? Translated("WebPage") : window.extend_resource;
    case ResourceType1012:
    case ResourceType5001:
      return window.extend_resource;
    default:
      return {};
  }
}

std::string CycleResourceNameOf(SingleWndCycleType type, unsigned int resourceId) {
  switch (type) {
    case SingleWndCycleCameras:
      return Elements().GetCameraElementName(resourceId);
    case SingleWndCycleAreas:
      return Elements().GetAreaNameByID(resourceId);
    default:
      return {};
  }
}

protocol::PlanItem ToNamedPlanItem(const CameraGridStruct& window, bool needsResourceName) {
  protocol::PlanItem item = ToPlanItem(window);
  if (needsResourceName) item.ResourceName = ResourceNameOf(window);
  auto cycleResource = item.CycleInfo.CycleResourceID.begin();
  for (const auto& [site, resource] : window.single_cycle.vc_id) {
    (cycleResource++)->ResourceName = CycleResourceNameOf(window.single_cycle.type, resource);
  }
  return item;
}

// Its windows are converted while they are written, so that a large view never stands there a second time.
struct PlanDetailAnswer : protocol::GetPlanDetailResponse {
  std::shared_ptr<const ViewInfo> view;  // empty for none
  bool needsResourceNames = false;
};

void WritePage(JsonWriter& out, const ViewPage& page, bool needsResourceNames) {
  protocol::PlanPage answer;
  answer.windowDivision = page.nSpliteType;
  answer.customWindowDivision = page.strCustomSplite;
  QorviVideoComm::WriteRecord(out, answer, &protocol::PlanPage::PlanItems, [&] {
    for (const CameraGridStruct& window : page.vcWindows) {
      QorviVideoComm::WriteRecord(out, ToNamedPlanItem(window, needsResourceNames));
    }
  });
}

// About as long as the text of that view will be.
size_t ExpectedSize(const ViewInfo* view) {
  constexpr size_t kHead = 512, kWindow = 1280;
  size_t size = kHead;
  if (!view) return size;
  for (const ViewPage& page : view->vcPages) size += page.vcWindows.size() * kWindow;
  return size;
}

std::string WriteResponse(PlanDetailAnswer& answer) {
  JsonWriter out(ExpectedSize(answer.view.get()));
  const protocol::GetPlanDetailResponse& head = answer;
  QorviVideoComm::WriteRecord(out, head, &protocol::GetPlanDetailResponse::PlanPages, [&] {
    if (!answer.view) return;
    for (const ViewPage& page : answer.view->vcPages) {
      if (!page.vcWindows.empty()) WritePage(out, page, answer.needsResourceNames);
    }
  });
  return out.Take();
}

void AnswerGetPlanDetail(const protocol::GetPlanDetailRequest& request, PlanDetailAnswer& response) {
  if (request.resource_download_judge) EnsureLoaded();

  const auto cached = Manager().GetViewByID(StringToUInt(request.ID));
  if (!cached) {
    response.ErrorInfo = Translated("NYyjnxIZwFAorxuFXv");
    return;
  }
  // One record throughout: the view may be replaced meanwhile.
  const std::shared_ptr<const ViewInfo> view = cached->Info();
  response.GroupID = IntToString(AsSigned(view->idViewGroup));
  response.ID = IntToString(AsSigned(view->idView));
  response.Name = view->strName;
  response.Type = view->enumViewType;
  response.AutoCycle = view->nAutoCycle;
  response.RoundTime = view->nCycleTime;
  response.AppCode = view->strGUID;
  response.is_share_view = view->bShared;
  response.share_user_name = view->strSharedUserName;

  ErrorCode error;
  if (request.NeedResourceName && !PreloadResourceNames(*view, error)) {
    response.ErrorInfo = TextOf(error);
    return;
  }
  response.view = view;
  response.needsResourceNames = request.NeedResourceName;
}

}  // namespace
}  // namespace QorviViewPlugin

QORVI_EXCHANGE(GetPlanDetail)
