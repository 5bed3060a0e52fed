// SPDX-License-Identifier: Apache-2.0
#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/JsonText.h"
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "VantBase/Base64.h"

namespace QorviViewPlugin {
namespace {

void Add(JsonText& json, std::string_view key, int number) {
  json.Key(key);
  json.Int(number);
}
void Add(JsonText& json, std::string_view key, const std::string& text) {
  json.Key(key);
  json.String(text);
}

template <class Write>
void AddObject(JsonText& json, std::string_view key, const Write& write) {
  json.Key(key);
  json.BeginObject();
  write();
  json.EndObject();
}

// A list without elements is left out.
template <class List, class Write>
void AddList(JsonText& json, std::string_view key, const List& list, const Write& write) {
  if (list.empty()) return;
  json.Key(key);
  json.BeginArray();
  for (const auto& element : list) {
    json.BeginObject();
    write(element);
    json.EndObject();
  }
  json.EndArray();
}

void WriteFishEye(JsonText& json, const FishEyeInfo& fisheye) {
  Add(json, "MountType", fisheye.mount_type);
  Add(json, "ExpandMode", fisheye.expand_mode);
  Add(json, "FishParentNo", fisheye.window_index);
  AddList(json, "FishEyeInfo", fisheye.vc_wnd_param, [&json](const FisheyeExpandWndParam& param) {
    Add(json, "No", param.wnd_no);
    Add(json, "PosX", FloatToString(param.pos_x));
    Add(json, "PosY", FloatToString(param.pos_y));
    Add(json, "Zoom", FloatToString(param.zoom));
  });
}

void WriteCycle(JsonText& json, const SingleWndCycle& cycle) {
  Add(json, "Type", cycle.type);
  Add(json, "CycleTime", cycle.cycle_time);
  Add(json, "CycleName", cycle.cycle_name);
  AddList(json, "ID", cycle.vc_id, [&json](const std::pair<unsigned int, unsigned int>& resource) {
    Add(json, "SiteID", AsSigned(resource.first));
    Add(json, "ResourceID", AsSigned(resource.second));
  });
}

void WriteEmap(JsonText& json, const CameraGridStruct& grid) {
  Add(json, "LoadMode", grid.map_load_type);
  Add(json, "PosX", grid.map_center_x);
  Add(json, "PosY", grid.map_center_y);
  Add(json, "ScaleSize", grid.map_scale_size);
  Add(json, "ExtendInfo", grid.map_more_info);
}

void WriteMilliCorners(JsonText& json, const Rectangle& corners) {
  Add(json, "TopX", ToMilli(corners.fXTop));
  Add(json, "TopY", ToMilli(corners.fYTop));
  Add(json, "BottomX", ToMilli(corners.fXBottom));
  Add(json, "BottomY", ToMilli(corners.fYBottom));
}

void WriteCenterMark(JsonText& json, const CalibrationInfo& mark) {
  WriteMilliCorners(json, mark.coordinate);
  Add(json, "StreamType", mark.stream_type);
}

void WriteZoomWindows(JsonText& json, const CameraGridStruct& grid) {
  Add(json, "ZoomMode", grid.zoom_mode);
  AddList(json, "ZoomWindow", grid.local_wins, [&json](const LocalWindowInfo& zoomWindow) {
    Add(json, "No", zoomWindow.ZoomWindowNo);
    WriteMilliCorners(json, zoomWindow.win_coordinate);
  });
}

void WriteWindow(JsonText& json, const CameraGridStruct& grid) {
  Add(json, "SequenceIndex", grid.n_seq_index);
  Add(json, "ResourceType", grid.enum_resource_type_);
  Add(json, "SiteID", AsSigned(grid.camera_workstation_id));
  Add(json, "ResourceID", AsSigned(grid.id_element_));
  Add(json, "RelateResourceID", AsSigned(grid.relate_id));
  Add(json, "RelateResourceName", grid.relate_name);
  Add(json, "RelateResourceType", RelateTypeToServerNumber(grid.relate_type));
  Add(json, "ExtendResource", grid.extend_resource);
  Add(json, "WindowNo", LowBits(grid.uIndex));
  Add(json, "Xtop", FloatToString(grid.struRect.fXTop));
  Add(json, "Ytop", FloatToString(grid.struRect.fYTop));
  Add(json, "Xbottom", FloatToString(grid.struRect.fXBottom));
  Add(json, "Ybottom", FloatToString(grid.struRect.fYBottom));
  Add(json, "PresetPointIndex", LowBits(grid.uPresetIndex));
  Add(json, "CruiseIndex", LowBits(grid.uCruiseIndex));
  Add(json, "TrackIndex", LowBits(grid.uTrackIndex));
  Add(json, "StreamType", grid.stream_type);

  if (grid.b_enable_fish_eye) AddObject(json, "FishEye", [&] { WriteFishEye(json, grid.fisheye_info); });
  // A cycle through nothing is not written, whatever its name and time.
  if (!grid.single_cycle.vc_id.empty()) AddObject(json, "Cycle", [&] { WriteCycle(json, grid.single_cycle); });
  if (grid.enum_resource_type_ == ResourceTypeEmap) AddObject(json, "Emap", [&] { WriteEmap(json, grid); });
  if (grid.enable_calibration) AddObject(json, "CenterMark", [&] { WriteCenterMark(json, grid.calibration_info); });
  AddObject(json, "ZoomWindowList", [&] { WriteZoomWindows(json, grid); });
  AddObject(json, "RelatedZoomWindow", [&] {
    Add(json, "ViewItemWindowNo", grid.relate_view_win_no);
    Add(json, "ZoomWindowNo", grid.relate_draw_box_no);
  });
}

void WritePage(JsonText& json, const ViewPage& page) {
  Add(json, "SpliteType", page.nSpliteType);
  Add(json, "CustomSplite",
      page.strCustomSplite.empty() ? std::string() : Vant::Base::Encrypt::Base64Encode(page.strCustomSplite));
  AddList(json, "PlanViewItem", page.vcWindows, [&json](const CameraGridStruct& grid) { WriteWindow(json, grid); });
}

}  // namespace

// By hand and not through the platform's document: a body of some hundred windows is the larger part of an edit's cost.
std::string WriteViewDocument(const ViewInfo& view) {
  JsonText json;
  json.BeginObject();
  AddObject(json, "View", [&] {
    Add(json, "ID", AsSigned(view.idView));
    Add(json, "Name", view.strName);
    // The server knows "in no group" only as -1.
    Add(json, "ViewGroupID", view.idViewGroup == 0 ? -1 : AsSigned(view.idViewGroup));
    Add(json, "UserID", AsSigned(view.idUser));
    Add(json, "SequenceIndex", LowBits(static_cast<unsigned long long>(view.nSequenceIndex)));
    Add(json, "AutoCycle", view.nAutoCycle);
    Add(json, "CycleTime", view.nCycleTime);
    if (view.bShared) Add(json, "SharedUserID", 1);
    AddList(json, "PlanPages", view.vcPages, [&json](const ViewPage& page) { WritePage(json, page); });
  });
  json.EndObject();
  return json.Take();
}

std::string WriteViewGroupDocument(const ViewGroupInfo& group) {
  NetLink::CRapidJsonProto document;
  PathCursor cursor(document, "/ViewGroup/");
  cursor.SetNumber("ID", AsSigned(group.idViewGroup));
  cursor.SetText("Name", group.strName);
  cursor.SetNumber("ParentViewGroupID", AsSigned(group.idParent));
  cursor.SetNumber("UserID", AsSigned(group.idUser));
  cursor.SetNumber("IsSharedView", group.bShared ? 1 : -1);
  cursor.SetNumber("SequenceIndex", LowBits(static_cast<unsigned long long>(group.nSequenceIndex)));
  return document.get_str(0);
}

}  // namespace QorviViewPlugin
