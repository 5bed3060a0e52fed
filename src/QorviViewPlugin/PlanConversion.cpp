// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/PlanConversion.h"

#include <algorithm>
#include <iterator>

#include "QorviViewPlugin/base/TextConversion.h"

namespace QorviViewPlugin {
namespace {

namespace protocol = ::QorviViewPlugin_view_plugin_protocol;

// One window content at the host and in the model.
struct ContentCodes {
  int host;
  ResourceType model;
};

constexpr ContentCodes kContentCodes[] = {
    {0, ResourceTypeNone},     {1001, ResourceTypeCamera}, {1002, ResourceTypeDoor},     {1005, ResourceTypeElevator},
    {1006, ResourceTypeRadar}, {1012, ResourceType1012},   {1027, ResourceType1027},     {2004, ResourceType2004},
    {5001, ResourceType5001},  {7001, ResourceTypeEmap},   {25001, ResourceTypeWebPage}, {29000, ResourceType29000},
};
constexpr ResourceType kUnknownContent{-1};
constexpr int kUnknownPlanItemType = 0;

// "StreamType" of a window without a stream: 100 in the model, -1 at the host. Converted on the way to the host only.
constexpr int kModelNoStream = 100;
constexpr int kHostNoStream = -1;

// --- Host to model

Rectangle RectangleFromTexts(const protocol::PlanItem& item) {
  return {StringToFloat(item.Xtop), StringToFloat(item.Ytop), StringToFloat(item.Xbottom), StringToFloat(item.Ybottom)};
}

template <class Corners>
Rectangle RectangleFromMilli(const Corners& corners) {
  return {FromMilli(corners.TopX), FromMilli(corners.TopY), FromMilli(corners.BottomX), FromMilli(corners.BottomY)};
}

FishEyeInfo ToFishEye(const protocol::FishEyeInfo& host) {
  FishEyeInfo model;
  model.mount_type = host.mount_type;
  model.expand_mode = host.expand_mode;
  model.window_index = host.window_no;
  for (const auto& param : host.FisheyeWndParam) {
    model.vc_wnd_param.push_back(
        {param.WndNo, StringToFloat(param.PosX), StringToFloat(param.PosY), StringToFloat(param.Zoom)});
  }
  return model;
}

SingleWndCycle ToCycle(const protocol::CycleInfo& host) {
  SingleWndCycle model;
  model.type = SingleWndCycleType{host.cycle_type};
  model.cycle_time = host.cycle_time;
  model.cycle_name = host.CycleName;
  for (const auto& resource : host.CycleResourceID) {
    model.vc_id.emplace_back(StringToUInt(resource.SiteID), StringToUInt(resource.ResourceID));
  }
  return model;
}

// --- Model to host

template <class Corners>
void SetMilliCorners(Corners& corners, const Rectangle& rectangle) {
  corners.TopX = ToMilli(rectangle.fXTop);
  corners.TopY = ToMilli(rectangle.fYTop);
  corners.BottomX = ToMilli(rectangle.fXBottom);
  corners.BottomY = ToMilli(rectangle.fYBottom);
}

protocol::FishEyeInfo FishEyeOf(const CameraGridStruct& window) {
  protocol::FishEyeInfo host;
  host.is_fisheye_open = window.b_enable_fish_eye;
  // What a closed fisheye holds is not shown.
  if (!window.b_enable_fish_eye) return host;
  host.mount_type = window.fisheye_info.mount_type;
  host.expand_mode = window.fisheye_info.expand_mode;
  host.window_no = window.fisheye_info.window_index;
  for (const auto& param : window.fisheye_info.vc_wnd_param) {
    host.FisheyeWndParam.push_back(
        {param.wnd_no, FloatToString(param.pos_x), FloatToString(param.pos_y), FloatToString(param.zoom)});
  }
  return host;
}

protocol::CycleInfo CycleOf(const SingleWndCycle& model) {
  protocol::CycleInfo host;
  if (model.vc_id.empty()) return host;
  host.cycle_type = model.type;
  host.cycle_time = model.cycle_time;
  host.CycleName = model.cycle_name;
  for (const auto& [site, resource] : model.vc_id) {
    host.CycleResourceID.push_back({UIntToString(site), UIntToString(resource), {}});
  }
  return host;
}

protocol::ZoomWindowList ZoomWindowsOf(const CameraGridStruct& window) {
  protocol::ZoomWindowList host;
  host.ZoomMode = window.zoom_mode;
  for (const auto& local : window.local_wins) {
    protocol::ZoomWindow zoom;
    zoom.No = local.ZoomWindowNo;
    SetMilliCorners(zoom, local.win_coordinate);
    host.ZoomWindow.push_back(zoom);
  }
  return host;
}

protocol::RelatedZoomWindow RelatedZoomWindowOf(const CameraGridStruct& window) {
  protocol::RelatedZoomWindow host;
  host.ViewItemWindowNo = window.relate_view_win_no;
  // A window with zoom windows of its own that is related to none relates to itself.
  if (!window.local_wins.empty() && host.ViewItemWindowNo == "-1") {
    host.ViewItemWindowNo = IntToString(window.n_seq_index);
  }
  host.ZoomWindowNo = window.relate_draw_box_no;
  return host;
}

}  // namespace

ResourceType PlanItemTypeToResourceType(int type) {
  const auto found = std::find_if(std::begin(kContentCodes), std::end(kContentCodes),
                                  [type](const ContentCodes& codes) { return codes.host == type; });
  return found == std::end(kContentCodes) ? kUnknownContent : found->model;
}

int ResourceTypeToPlanItemType(ResourceType type) {
  const auto found = std::find_if(std::begin(kContentCodes), std::end(kContentCodes),
                                  [type](const ContentCodes& codes) { return codes.model == type; });
  return found == std::end(kContentCodes) ? kUnknownPlanItemType : found->host;
}

CameraGridStruct ToWindow(const protocol::PlanItem& item) {
  CameraGridStruct window;
  window.uIndex = SignExtended(item.Sequence);
  window.n_seq_index = item.Sequence;
  window.camera_workstation_id = StringToUInt(item.SiteID);
  window.id_element_ = StringToUInt(item.ResourceID);
  window.enum_resource_type_ = PlanItemTypeToResourceType(item.ResourceType);
  window.bPTZConfigured = true;
  // A camera window carries its preset's name here.
  window.extend_resource = window.enum_resource_type_ == ResourceTypeCamera ? item.PresetName : item.ExtendResource;
  window.struRect = RectangleFromTexts(item);
  window.uPresetIndex = SignExtended(item.PresetId);
  window.uCruiseIndex = SignExtended(item.CruiseIndex);
  window.uTrackIndex = SignExtended(item.TrackIndex);
  window.idPOS = AsUnsigned(item.WindowNo);
  window.stream_type = ResourceStore::Stream::StreamType{item.StreamType};
  window.b_enable_fish_eye = item.FishEye.is_fisheye_open;
  window.fisheye_info = ToFishEye(item.FishEye);
  window.single_cycle = ToCycle(item.CycleInfo);
  window.map_center_x = item.Emap.PosX;
  window.map_center_y = item.Emap.PosY;
  window.map_scale_size = item.Emap.ScaleSize;
  window.map_more_info = item.Emap.ExtendInfo;
  window.map_load_type = MapLoadType{item.Emap.LoadMode};
  window.relate_type = RelateResourceType{item.RelateResourceType};
  window.relate_id = AsUnsigned(item.RelateResourceID);
  window.relate_name = item.RelateResourceName;
  window.enable_calibration = true;
  window.calibration_info.coordinate = RectangleFromMilli(item.CenterMark);
  window.calibration_info.stream_type = ResourceStore::Stream::StreamType{item.CenterMark.StreamType};
  window.zoom_mode = ZoomMode{item.ZoomWindowList.ZoomMode};
  for (const auto& zoom : item.ZoomWindowList.ZoomWindow) {
    window.local_wins.push_back({zoom.No, RectangleFromMilli(zoom)});
  }
  window.relate_view_win_no = item.RelatedZoomWindow.ViewItemWindowNo;
  window.relate_draw_box_no = item.RelatedZoomWindow.ZoomWindowNo;
  return window;
}

ViewPage ToViewPage(const protocol::PlanPage& page) {
  ViewPage model;
  model.nSpliteType = page.windowDivision;
  model.strCustomSplite = page.customWindowDivision;
  model.vcWindows.reserve(page.PlanItems.size());
  for (const auto& item : page.PlanItems) model.vcWindows.push_back(ToWindow(item));
  return model;
}

protocol::PlanItem ToPlanItem(const CameraGridStruct& window) {
  protocol::PlanItem item;
  item.Sequence = window.n_seq_index;
  item.ResourceType = ResourceTypeToPlanItemType(window.enum_resource_type_);
  item.ResourceID = IntToString(AsSigned(window.id_element_));
  item.SiteID = IntToString(AsSigned(window.camera_workstation_id));
  item.OnlineStatus = 1;
  item.StreamType = window.stream_type == kModelNoStream ? kHostNoStream : window.stream_type;
  item.PresetId = LowBits(window.uPresetIndex);
  if (window.enum_resource_type_ == ResourceTypeCamera) item.PresetName = window.extend_resource;
  item.RelateResourceType = window.relate_type;
  item.RelateResourceID = AsSigned(window.relate_id);
  item.RelateResourceName = window.relate_name;
  item.ExtendResource = window.extend_resource;
  item.WindowNo = LowBits(window.uIndex);
  item.Xtop = FloatToString(window.struRect.fXTop);
  item.Ytop = FloatToString(window.struRect.fYTop);
  item.Xbottom = FloatToString(window.struRect.fXBottom);
  item.Ybottom = FloatToString(window.struRect.fYBottom);
  item.CruiseIndex = LowBits(window.uCruiseIndex);
  item.TrackIndex = LowBits(window.uTrackIndex);
  item.FishEye = FishEyeOf(window);
  item.Emap = {window.map_load_type, window.map_center_x, window.map_center_y, window.map_scale_size,
               window.map_more_info};
  SetMilliCorners(item.CenterMark, window.calibration_info.coordinate);
  item.CenterMark.StreamType = window.calibration_info.stream_type;
  item.ZoomWindowList = ZoomWindowsOf(window);
  item.RelatedZoomWindow = RelatedZoomWindowOf(window);
  item.CycleInfo = CycleOf(window.single_cycle);
  return item;
}

}  // namespace QorviViewPlugin
