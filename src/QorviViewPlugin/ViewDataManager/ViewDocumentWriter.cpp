// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/ViewDataManager/ViewDocument.h"
#include "VantBase/Base64.h"

namespace QorviViewPlugin {
namespace {

void WriteFishEye(PathCursor& window, const FishEyeInfo& fisheye) {
  const auto group = window.Enter("FishEye");
  window.SetNumber("MountType", fisheye.mount_type);
  window.SetNumber("ExpandMode", fisheye.expand_mode);
  window.SetNumber("FishParentNo", fisheye.window_index);
  int n = 0;
  for (const FisheyeExpandWndParam& param : fisheye.vc_wnd_param) {
    const auto entry = window.Enter("FishEyeInfo", ++n);
    window.SetNumber("No", param.wnd_no);
    window.SetText("PosX", FloatToString(param.pos_x));
    window.SetText("PosY", FloatToString(param.pos_y));
    window.SetText("Zoom", FloatToString(param.zoom));
  }
}

void WriteCycle(PathCursor& window, const SingleWndCycle& cycle) {
  const auto group = window.Enter("Cycle");
  window.SetNumber("Type", cycle.type);
  window.SetNumber("CycleTime", cycle.cycle_time);
  window.SetText("CycleName", cycle.cycle_name);
  int n = 0;
  for (const auto& [siteId, resourceId] : cycle.vc_id) {
    const auto entry = window.Enter("ID", ++n);
    window.SetNumber("SiteID", AsSigned(siteId));
    window.SetNumber("ResourceID", AsSigned(resourceId));
  }
}

void WriteEmap(PathCursor& window, const CameraGridStruct& grid) {
  const auto group = window.Enter("Emap");
  window.SetNumber("LoadMode", grid.map_load_type);
  window.SetText("PosX", grid.map_center_x);
  window.SetText("PosY", grid.map_center_y);
  window.SetNumber("ScaleSize", grid.map_scale_size);
  window.SetText("ExtendInfo", grid.map_more_info);
}

void WriteMilliCorners(PathCursor& box, const Rectangle& corners) {
  box.SetNumber("TopX", ToMilli(corners.fXTop));
  box.SetNumber("TopY", ToMilli(corners.fYTop));
  box.SetNumber("BottomX", ToMilli(corners.fXBottom));
  box.SetNumber("BottomY", ToMilli(corners.fYBottom));
}

void WriteCenterMark(PathCursor& window, const CalibrationInfo& mark) {
  const auto group = window.Enter("CenterMark");
  WriteMilliCorners(window, mark.coordinate);
  window.SetNumber("StreamType", mark.stream_type);
}

void WriteZoomWindows(PathCursor& window, const CameraGridStruct& grid) {
  const auto group = window.Enter("ZoomWindowList");
  window.SetNumber("ZoomMode", grid.zoom_mode);
  int n = 0;
  for (const LocalWindowInfo& zoomWindow : grid.local_wins) {
    const auto entry = window.Enter("ZoomWindow", ++n);
    window.SetNumber("No", zoomWindow.ZoomWindowNo);
    WriteMilliCorners(window, zoomWindow.win_coordinate);
  }
}

void WriteWindow(PathCursor& window, const CameraGridStruct& grid) {
  window.SetNumber("SequenceIndex", grid.n_seq_index);
  window.SetNumber("ResourceType", grid.enum_resource_type_);
  window.SetNumber("SiteID", AsSigned(grid.camera_workstation_id));
  window.SetNumber("ResourceID", AsSigned(grid.id_element_));
  window.SetNumber("RelateResourceID", AsSigned(grid.relate_id));
  window.SetText("RelateResourceName", grid.relate_name);
  window.SetNumber("RelateResourceType", RelateTypeToServerNumber(grid.relate_type));
  window.SetText("ExtendResource", grid.extend_resource);
  window.SetNumber("WindowNo", LowBits(grid.uIndex));
  window.SetText("Xtop", FloatToString(grid.struRect.fXTop));
  window.SetText("Ytop", FloatToString(grid.struRect.fYTop));
  window.SetText("Xbottom", FloatToString(grid.struRect.fXBottom));
  window.SetText("Ybottom", FloatToString(grid.struRect.fYBottom));
  window.SetNumber("PresetPointIndex", LowBits(grid.uPresetIndex));
  window.SetNumber("CruiseIndex", LowBits(grid.uCruiseIndex));
  window.SetNumber("TrackIndex", LowBits(grid.uTrackIndex));
  window.SetNumber("StreamType", grid.stream_type);

  if (grid.b_enable_fish_eye) WriteFishEye(window, grid.fisheye_info);
  // A cycle through nothing is not written, whatever its name and time.
  if (!grid.single_cycle.vc_id.empty()) WriteCycle(window, grid.single_cycle);
  if (grid.enum_resource_type_ == ResourceTypeEmap) WriteEmap(window, grid);
  if (grid.enable_calibration) WriteCenterMark(window, grid.calibration_info);
  WriteZoomWindows(window, grid);
  const auto related = window.Enter("RelatedZoomWindow");
  window.SetText("ViewItemWindowNo", grid.relate_view_win_no);
  window.SetNumber("ZoomWindowNo", grid.relate_draw_box_no);
}

void WritePages(PathCursor& view, const std::vector<ViewPage>& pages) {
  int p = 0;
  for (const ViewPage& page : pages) {
    const auto pageLevel = view.Enter("PlanPages", ++p);
    view.SetNumber("SpliteType", page.nSpliteType);
    view.SetText("CustomSplite", page.strCustomSplite.empty()
                                     ? std::string()
                                     : Vant::Base::Encrypt::Base64Encode(page.strCustomSplite));
    int w = 0;
    for (const CameraGridStruct& grid : page.vcWindows) {
      const auto windowLevel = view.Enter("PlanViewItem", ++w);
      WriteWindow(view, grid);
    }
  }
}

}  // namespace

std::string WriteViewDocument(const ViewInfo& view) {
  NetLink::CRapidJsonProto document;
  PathCursor cursor(document, "/View/");
  cursor.SetNumber("ID", AsSigned(view.idView));
  cursor.SetText("Name", view.strName);
  // The server knows "in no group" only as -1.
  cursor.SetNumber("ViewGroupID", view.idViewGroup == 0 ? -1 : AsSigned(view.idViewGroup));
  cursor.SetNumber("UserID", AsSigned(view.idUser));
  cursor.SetNumber("SequenceIndex", LowBits(static_cast<unsigned long long>(view.nSequenceIndex)));
  cursor.SetNumber("AutoCycle", view.nAutoCycle);
  cursor.SetNumber("CycleTime", view.nCycleTime);
  if (view.bShared) cursor.SetNumber("SharedUserID", 1);
  WritePages(cursor, view.vcPages);
  return document.get_str(0);
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
