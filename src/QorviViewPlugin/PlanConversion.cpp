// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/PlanConversion.h"

#include <algorithm>
#include <iterator>
#include <thread>

#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/TextConversion.h"
#include "ResourceStore/Element.h"
#include "ResourceStore/ViewGroupManager.h"

namespace QorviViewPlugin {
namespace {

namespace host = QorviViewPlugin_view_plugin_protocol;
using ResourceStore::CElement;
using ResourceStore::CElementManager;
using ResourceStore::Stream::StreamType;

// Contents that host and model number alike. An empty window is 0 there and 100 here.
constexpr ResourceType kCommonTypes[] = {
    ResourceTypeCamera, ResourceTypeDoor, ResourceTypeElevator, ResourceTypeRadar,   ResourceType1012, ResourceType1027,
    ResourceType2004,   ResourceType5001, ResourceTypeEmap,     ResourceTypeWebPage, ResourceType29000};

bool IsCommonType(int type) {
  return std::find(std::begin(kCommonTypes), std::end(kCommonTypes), type) != std::end(kCommonTypes);
}

// A stream number that the host reads as "not chosen".
constexpr int kStreamNotChosen = 100;

CElementManager& Elements() {
  return Vant::Base::CSingleton<CElementManager>::Instance();
}

// --- To the model

template <class HostCorners>
Rectangle CornersToModel(const HostCorners& corners) {
  return {FromMilli(corners.TopX), FromMilli(corners.TopY), FromMilli(corners.BottomX), FromMilli(corners.BottomY)};
}

FishEyeInfo FishEyeToModel(const host::FishEyeInfo& from) {
  FishEyeInfo to;
  to.mount_type = from.mount_type;
  to.expand_mode = from.expand_mode;
  to.window_index = from.window_no;
  for (const host::FisheyeWndParam& param : from.FisheyeWndParam) {
    to.vc_wnd_param.push_back(
        {param.WndNo, StringToFloat(param.PosX), StringToFloat(param.PosY), StringToFloat(param.Zoom)});
  }
  return to;
}

SingleWndCycle CycleToModel(const host::CycleInfo& from) {
  SingleWndCycle to;
  to.type = static_cast<SingleWndCycleType>(from.cycle_type);
  to.cycle_time = from.cycle_time;
  to.cycle_name = from.CycleName;
  for (const host::CycleResourceID& resource : from.CycleResourceID) {
    to.vc_id.emplace_back(StringToUInt(resource.SiteID), StringToUInt(resource.ResourceID));
  }
  return to;
}

CameraGridStruct WindowToModel(const host::PlanItem& from) {
  CameraGridStruct to;
  to.uIndex = SignExtended(from.Sequence);
  to.n_seq_index = from.Sequence;
  to.camera_workstation_id = StringToUInt(from.SiteID);
  to.id_element_ = StringToUInt(from.ResourceID);
  to.enum_resource_type_ = PlanItemTypeToResourceType(from.ResourceType);
  to.bPTZConfigured = true;
  // A camera window keeps its preset's name where others keep their own text.
  to.extend_resource = to.enum_resource_type_ == ResourceTypeCamera ? from.PresetName : from.ExtendResource;
  to.struRect = {StringToFloat(from.Xtop), StringToFloat(from.Ytop), StringToFloat(from.Xbottom),
                 StringToFloat(from.Ybottom)};
  to.uPresetIndex = SignExtended(from.PresetId);
  to.uCruiseIndex = SignExtended(from.CruiseIndex);
  to.uTrackIndex = SignExtended(from.TrackIndex);
  to.idPOS = AsUnsigned(from.WindowNo);
  to.stream_type = static_cast<StreamType>(from.StreamType);
  to.b_enable_fish_eye = from.FishEye.is_fisheye_open;
  to.fisheye_info = FishEyeToModel(from.FishEye);
  to.single_cycle = CycleToModel(from.CycleInfo);
  to.map_center_x = from.Emap.PosX;
  to.map_center_y = from.Emap.PosY;
  to.map_scale_size = from.Emap.ScaleSize;
  to.map_more_info = from.Emap.ExtendInfo;
  to.map_load_type = static_cast<MapLoadType>(from.Emap.LoadMode);
  to.relate_type = static_cast<RelateResourceType>(from.RelateResourceType);
  to.relate_id = AsUnsigned(from.RelateResourceID);
  to.relate_name = from.RelateResourceName;
  to.enable_calibration = true;
  to.calibration_info = {CornersToModel(from.CenterMark), static_cast<StreamType>(from.CenterMark.StreamType)};
  to.zoom_mode = static_cast<ZoomMode>(from.ZoomWindowList.ZoomMode);
  for (const host::ZoomWindow& zoomWindow : from.ZoomWindowList.ZoomWindow) {
    to.local_wins.push_back({zoomWindow.No, CornersToModel(zoomWindow)});
  }
  to.relate_view_win_no = from.RelatedZoomWindow.ViewItemWindowNo;
  to.relate_draw_box_no = from.RelatedZoomWindow.ZoomWindowNo;
  return to;
}

// --- To the host

template <class HostCorners>
void CornersToHost(const Rectangle& from, HostCorners& to) {
  to.TopX = ToMilli(from.fXTop);
  to.TopY = ToMilli(from.fYTop);
  to.BottomX = ToMilli(from.fXBottom);
  to.BottomY = ToMilli(from.fYBottom);
}

void FishEyeToHost(const CameraGridStruct& from, host::FishEyeInfo& to) {
  to.is_fisheye_open = from.b_enable_fish_eye;
  // Of a closed fisheye the host is told nothing more, whatever the model holds.
  if (!from.b_enable_fish_eye) return;
  to.mount_type = from.fisheye_info.mount_type;
  to.expand_mode = from.fisheye_info.expand_mode;
  to.window_no = from.fisheye_info.window_index;
  for (const FisheyeExpandWndParam& param : from.fisheye_info.vc_wnd_param) {
    host::FisheyeWndParam& window = to.FisheyeWndParam.emplace_back();
    window.WndNo = param.wnd_no;
    window.PosX = FloatToString(param.pos_x);
    window.PosY = FloatToString(param.pos_y);
    window.Zoom = FloatToString(param.zoom);
  }
}

std::string CycleResourceName(SingleWndCycleType type, unsigned int id) {
  switch (type) {
    case SingleWndCycleAreas:
      return Elements().GetAreaNameByID(id);
    case SingleWndCycleCameras:
      return Elements().GetCameraElementName(id);
    default:
      return "";
  }
}

void CycleToHost(const SingleWndCycle& from, host::CycleInfo& to) {
  if (from.vc_id.empty()) return;
  to.cycle_type = from.type;
  to.cycle_time = from.cycle_time;
  to.CycleName = from.cycle_name;
  for (const auto& [siteId, resourceId] : from.vc_id) {
    host::CycleResourceID& resource = to.CycleResourceID.emplace_back();
    resource.SiteID = UIntToString(siteId);
    resource.ResourceID = UIntToString(resourceId);
    resource.ResourceName = CycleResourceName(from.type, resourceId);
  }
}

void ZoomWindowsToHost(const CameraGridStruct& from, host::PlanItem& to) {
  to.ZoomWindowList.ZoomMode = from.zoom_mode;
  for (const LocalWindowInfo& zoomWindow : from.local_wins) {
    host::ZoomWindow& entry = to.ZoomWindowList.ZoomWindow.emplace_back();
    entry.No = zoomWindow.ZoomWindowNo;
    CornersToHost(zoomWindow.win_coordinate, entry);
  }
  const bool pointsToItself = !from.local_wins.empty() && from.relate_view_win_no == "-1";
  to.RelatedZoomWindow.ViewItemWindowNo = pointsToItself ? IntToString(from.n_seq_index) : from.relate_view_win_no;
  to.RelatedZoomWindow.ZoomWindowNo = from.relate_draw_box_no;
}

std::string NameOrNothing(const std::shared_ptr<CElement>& element) {
  return element ? element->GetName() : "";
}

std::string ResourceNameOf(const CameraGridStruct& window) {
  const unsigned int id = window.id_element_;
  switch (window.enum_resource_type_) {
    case ResourceTypeNone:
      return " ";
    case ResourceTypeCamera:
      return Elements().GetCameraElementName(id);
    case ResourceTypeDoor:
      return Elements().GetDoorElementName(id);
    case ResourceTypeElevator:
      return Elements().GetElevatorElementName(id);
    case ResourceTypeRadar:
      return NameOrNothing(Elements().FindRadarElementByID(id));
    case ResourceType1027:
    case ResourceType2004:
      return NameOrNothing(Elements().FindOtherElementByID(id));
    case ResourceTypeEmap:
      return Translated("Map");
    case ResourceTypeWebPage:
      return window.extend_resource.empty() ? Translated("WebPage") : window.extend_resource;
    case ResourceType1012:
    case ResourceType5001:
      return window.extend_resource;
    default:
      return "";
  }
}

host::PlanItem WindowToHost(const CameraGridStruct& from, ResourceNames names) {
  host::PlanItem to;
  to.Sequence = from.n_seq_index;
  to.ResourceType = ResourceTypeToPlanItemType(from.enum_resource_type_);
  to.ExtendResource = from.extend_resource;
  to.ResourceID = IntToString(AsSigned(from.id_element_));
  to.SiteID = IntToString(AsSigned(from.camera_workstation_id));
  if (names == ResourceNames::Filled) to.ResourceName = ResourceNameOf(from);
  to.OnlineStatus = 1;
  to.StreamType = from.stream_type == kStreamNotChosen ? -1 : static_cast<int>(from.stream_type);
  to.PresetId = LowBits(from.uPresetIndex);
  if (from.enum_resource_type_ == ResourceTypeCamera) to.PresetName = from.extend_resource;
  to.RelateResourceType = from.relate_type;
  to.RelateResourceID = AsSigned(from.relate_id);
  to.RelateResourceName = from.relate_name;
  to.WindowNo = LowBits(from.uIndex);
  to.Xtop = FloatToString(from.struRect.fXTop);
  to.Ytop = FloatToString(from.struRect.fYTop);
  to.Xbottom = FloatToString(from.struRect.fXBottom);
  to.Ybottom = FloatToString(from.struRect.fYBottom);
  to.CruiseIndex = LowBits(from.uCruiseIndex);
  to.TrackIndex = LowBits(from.uTrackIndex);
  FishEyeToHost(from, to.FishEye);
  to.Emap.LoadMode = from.map_load_type;
  to.Emap.PosX = from.map_center_x;
  to.Emap.PosY = from.map_center_y;
  to.Emap.ScaleSize = from.map_scale_size;
  to.Emap.ExtendInfo = from.map_more_info;
  CornersToHost(from.calibration_info.coordinate, to.CenterMark);
  to.CenterMark.StreamType = from.calibration_info.stream_type;
  ZoomWindowsToHost(from, to);
  CycleToHost(from.single_cycle, to.CycleInfo);
  return to;
}

constexpr unsigned int kFirstTopLevel = 0u - 2;
constexpr unsigned int kSecondTopLevel = 0u - 4;

}  // namespace

unsigned int FoldFirstTopLevel(unsigned int id) {
  return id == kFirstTopLevel ? kNoId : id;
}

unsigned int FoldBothTopLevels(unsigned int id) {
  return id == kSecondTopLevel ? kNoId : FoldFirstTopLevel(id);
}

unsigned int OwnerOfType(int type) {
  return type == ViewTypePublic ? kNoId : AsUnsigned(CurrentUserId());
}

void AwaitDownload() {
  const auto& downloads = Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
  while (!downloads.IsViewDownloadSuccess()) std::this_thread::yield();
}

ResourceType PlanItemTypeToResourceType(int type) {
  if (type == 0) return ResourceTypeNone;
  return static_cast<ResourceType>(IsCommonType(type) ? type : -1);
}

int ResourceTypeToPlanItemType(ResourceType type) {
  return IsCommonType(type) ? static_cast<int>(type) : 0;
}

ViewPage ToModel(const host::PlanPage& page) {
  ViewPage result;
  result.nSpliteType = page.windowDivision;
  result.strCustomSplite = page.customWindowDivision;
  result.vcWindows.reserve(page.PlanItems.size());
  for (const host::PlanItem& item : page.PlanItems) result.vcWindows.push_back(WindowToModel(item));
  return result;
}

host::PlanPage ToHost(const ViewPage& page, ResourceNames names) {
  host::PlanPage result;
  result.windowDivision = page.nSpliteType;
  result.customWindowDivision = page.strCustomSplite;
  result.PlanItems.reserve(page.vcWindows.size());
  for (const CameraGridStruct& window : page.vcWindows) result.PlanItems.push_back(WindowToHost(window, names));
  return result;
}

}  // namespace QorviViewPlugin
