// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/base/JsonWriter.h"
#include "QorviViewPlugin/base/TextConversion.h"
#include "VantBase/Base64.h"

namespace QorviViewPlugin {
namespace {

void Add(JsonWriter& out, std::string_view key, int number) {
  out.Key(key);
  out.Int(number);
}
void Add(JsonWriter& out, std::string_view key, const std::string& text) {
  out.Key(key);
  out.String(text);
}

template <class Write>
void AddObject(JsonWriter& out, std::string_view key, const Write& write) {
  out.Key(key);
  out.BeginObject();
  write();
  out.EndObject();
}

// A list without elements is left out.
template <class List, class Write>
void AddList(JsonWriter& out, std::string_view key, const List& list, const Write& write) {
  if (list.empty()) return;
  out.Key(key);
  out.BeginArray();
  for (const auto& element : list) {
    out.BeginObject();
    write(element);
    out.EndObject();
  }
  out.EndArray();
}

void WriteFishEye(JsonWriter& out, const FishEyeInfo& fisheye) {
  Add(out, "MountType", fisheye.mount_type);
  Add(out, "ExpandMode", fisheye.expand_mode);
  Add(out, "FishParentNo", fisheye.window_index);
  AddList(out, "FishEyeInfo", fisheye.vc_wnd_param, [&out](const FisheyeExpandWndParam& param) {
    Add(out, "No", param.wnd_no);
    Add(out, "PosX", FloatToString(param.pos_x));
    Add(out, "PosY", FloatToString(param.pos_y));
    Add(out, "Zoom", FloatToString(param.zoom));
  });
}

void WriteCycle(JsonWriter& out, const SingleWndCycle& cycle) {
  Add(out, "Type", cycle.type);
  Add(out, "CycleTime", cycle.cycle_time);
  Add(out, "CycleName", cycle.cycle_name);
  AddList(out, "ID", cycle.vc_id, [&out](const std::pair<unsigned int, unsigned int>& resource) {
    Add(out, "SiteID", AsSigned(resource.first));
    Add(out, "ResourceID", AsSigned(resource.second));
  });
}

void WriteEmap(JsonWriter& out, const CameraGridStruct& grid) {
  Add(out, "LoadMode", grid.map_load_type);
  Add(out, "PosX", grid.map_center_x);
  Add(out, "PosY", grid.map_center_y);
  Add(out, "ScaleSize", grid.map_scale_size);
  Add(out, "ExtendInfo", grid.map_more_info);
}

void WriteMilliCorners(JsonWriter& out, const Rectangle& corners) {
  Add(out, "TopX", ToMilli(corners.fXTop));
  Add(out, "TopY", ToMilli(corners.fYTop));
  Add(out, "BottomX", ToMilli(corners.fXBottom));
  Add(out, "BottomY", ToMilli(corners.fYBottom));
}

void WriteCenterMark(JsonWriter& out, const CalibrationInfo& mark) {
  WriteMilliCorners(out, mark.coordinate);
  Add(out, "StreamType", mark.stream_type);
}

void WriteZoomWindows(JsonWriter& out, const CameraGridStruct& grid) {
  Add(out, "ZoomMode", grid.zoom_mode);
  AddList(out, "ZoomWindow", grid.local_wins, [&out](const LocalWindowInfo& zoomWindow) {
    Add(out, "No", zoomWindow.ZoomWindowNo);
    WriteMilliCorners(out, zoomWindow.win_coordinate);
  });
}

void WriteWindow(JsonWriter& out, const CameraGridStruct& grid) {
  Add(out, "SequenceIndex", grid.n_seq_index);
  Add(out, "ResourceType", grid.enum_resource_type_);
  Add(out, "SiteID", AsSigned(grid.camera_workstation_id));
  Add(out, "ResourceID", AsSigned(grid.id_element_));
  Add(out, "RelateResourceID", AsSigned(grid.relate_id));
  Add(out, "RelateResourceName", grid.relate_name);
  Add(out, "RelateResourceType", RelateTypeToServerNumber(grid.relate_type));
  Add(out, "ExtendResource", grid.extend_resource);
  Add(out, "WindowNo", LowBits(grid.uIndex));
  Add(out, "Xtop", FloatToString(grid.struRect.fXTop));
  Add(out, "Ytop", FloatToString(grid.struRect.fYTop));
  Add(out, "Xbottom", FloatToString(grid.struRect.fXBottom));
  Add(out, "Ybottom", FloatToString(grid.struRect.fYBottom));
  Add(out, "PresetPointIndex", LowBits(grid.uPresetIndex));
  Add(out, "CruiseIndex", LowBits(grid.uCruiseIndex));
  Add(out, "TrackIndex", LowBits(grid.uTrackIndex));
  Add(out, "StreamType", grid.stream_type);

  if (grid.b_enable_fish_eye) AddObject(out, "FishEye", [&] { WriteFishEye(out, grid.fisheye_info); });
  // A cycle through nothing is not written, whatever its name and time.
  if (!grid.single_cycle.vc_id.empty()) AddObject(out, "Cycle", [&] { WriteCycle(out, grid.single_cycle); });
  if (grid.enum_resource_type_ == ResourceTypeEmap) AddObject(out, "Emap", [&] { WriteEmap(out, grid); });
  if (grid.enable_calibration) AddObject(out, "CenterMark", [&] { WriteCenterMark(out, grid.calibration_info); });
  AddObject(out, "ZoomWindowList", [&] { WriteZoomWindows(out, grid); });
  AddObject(out, "RelatedZoomWindow", [&] {
    Add(out, "ViewItemWindowNo", grid.relate_view_win_no);
    Add(out, "ZoomWindowNo", grid.relate_draw_box_no);
  });
}

void WritePage(JsonWriter& out, const ViewPage& page) {
  Add(out, "SpliteType", page.nSpliteType);
  Add(out, "CustomSplite",
      page.strCustomSplite.empty() ? std::string() : Vant::Base::Encrypt::Base64Encode(page.strCustomSplite));
  AddList(out, "PlanViewItem", page.vcWindows, [&out](const CameraGridStruct& grid) { WriteWindow(out, grid); });
}

// The document's one object, under its name.
template <class Write>
std::string WriteDocument(std::string_view name, size_t windows, const Write& write) {
  constexpr size_t kHead = 256, kWindow = 640;  // about as many bytes
  JsonWriter out(kHead + windows * kWindow);
  out.BeginObject();
  AddObject(out, name, [&] { write(out); });
  out.EndObject();
  return out.Take();
}

}  // namespace

// By hand and not through the platform's document: a body of some hundred windows is the larger part of an edit's cost.
std::string WriteViewDocument(const ViewInfo& view) {
  size_t windows = 0;
  for (const ViewPage& page : view.vcPages) windows += page.vcWindows.size();
  return WriteDocument("View", windows, [&view](JsonWriter& out) {
    Add(out, "ID", AsSigned(view.idView));
    Add(out, "Name", view.strName);
    // The server knows "in no group" only as -1.
    Add(out, "ViewGroupID", view.idViewGroup == 0 ? -1 : AsSigned(view.idViewGroup));
    Add(out, "UserID", AsSigned(view.idUser));
    Add(out, "SequenceIndex", LowBits(static_cast<unsigned long long>(view.nSequenceIndex)));
    Add(out, "AutoCycle", view.nAutoCycle);
    Add(out, "CycleTime", view.nCycleTime);
    if (view.bShared) Add(out, "SharedUserID", 1);
    AddList(out, "PlanPages", view.vcPages, [&out](const ViewPage& page) { WritePage(out, page); });
  });
}

std::string WriteViewGroupDocument(const ViewGroupInfo& group) {
  return WriteDocument("ViewGroup", 0, [&group](JsonWriter& out) {
    Add(out, "ID", AsSigned(group.idViewGroup));
    Add(out, "Name", group.strName);
    Add(out, "ParentViewGroupID", AsSigned(group.idParent));
    Add(out, "UserID", AsSigned(group.idUser));
    Add(out, "IsSharedView", group.bShared ? 1 : -1);
    Add(out, "SequenceIndex", LowBits(static_cast<unsigned long long>(group.nSequenceIndex)));
  });
}

}  // namespace QorviViewPlugin
