// SPDX-License-Identifier: Apache-2.0
#include "ModelCheck.h"

#include <algorithm>
#include <tuple>

#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "Report.h"

namespace bench {

namespace {

using namespace QorviViewPlugin;

bool IsSame(const Rectangle& one, const Rectangle& other) {
  return std::tie(one.fXTop, one.fYTop, one.fXBottom, one.fYBottom) ==
         std::tie(other.fXTop, other.fYTop, other.fXBottom, other.fYBottom);
}

bool IsSame(const FisheyeExpandWndParam& one, const FisheyeExpandWndParam& other) {
  return std::tie(one.wnd_no, one.pos_x, one.pos_y, one.zoom) ==
         std::tie(other.wnd_no, other.pos_x, other.pos_y, other.zoom);
}

bool IsSame(const LocalWindowInfo& one, const LocalWindowInfo& other) {
  return one.ZoomWindowNo == other.ZoomWindowNo && IsSame(one.win_coordinate, other.win_coordinate);
}

bool IsSame(const CameraGridStruct& one, const CameraGridStruct& other);
bool IsSame(const ViewPage& one, const ViewPage& other);

template <class Record>
bool AreSame(const std::vector<Record>& one, const std::vector<Record>& other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](const Record& left, const Record& right) { return IsSame(left, right); });
}

auto Plain(const CameraGridStruct& w) {
  return std::tie(w.idView, w.uIndex, w.n_seq_index, w.camera_workstation_id, w.id_element_, w.enum_resource_type_,
                  w.bPTZConfigured, w.uPresetIndex, w.uCruiseIndex, w.uTrackIndex, w.idPOS, w.stream_type,
                  w.map_center_x, w.map_center_y, w.map_scale_size, w.map_more_info, w.relate_type, w.relate_id,
                  w.relate_name, w.map_load_type, w.extend_resource, w.enable_calibration, w.zoom_mode,
                  w.relate_view_win_no, w.relate_draw_box_no, w.b_enable_fish_eye, w.calibration_info.stream_type,
                  w.fisheye_info.mount_type, w.fisheye_info.expand_mode, w.fisheye_info.window_index,
                  w.single_cycle.type, w.single_cycle.cycle_time, w.single_cycle.cycle_name, w.single_cycle.vc_id);
}

bool IsSame(const CameraGridStruct& one, const CameraGridStruct& other) {
  return Plain(one) == Plain(other) && IsSame(one.struRect, other.struRect) &&
         IsSame(one.calibration_info.coordinate, other.calibration_info.coordinate) &&
         AreSame(one.local_wins, other.local_wins) &&
         AreSame(one.fisheye_info.vc_wnd_param, other.fisheye_info.vc_wnd_param);
}

bool IsSame(const ViewPage& one, const ViewPage& other) {
  return std::tie(one.strCustomSplite, one.nSpliteType) == std::tie(other.strCustomSplite, other.nSpliteType) &&
         AreSame(one.vcWindows, other.vcWindows);
}

auto Plain(const ViewInfo& v) {
  return std::tie(v.idView, v.strGUID, v.strName, v.idViewGroup, v.enumViewType, v.idUser, v.nSequenceIndex,
                  v.nAutoCycle, v.nCycleTime, v.nMethod, v.bShared, v.strSharedUserName, v.nChangeNumber);
}

}  // namespace

bool IsSame(const ViewInfo& one, const ViewInfo& other) {
  return Plain(one) == Plain(other) && AreSame(one.vcPages, other.vcPages);
}

void CheckCache(const SiteSize& size) {
  auto& manager = Vant::Base::CSingleton<CViewGroupManager>::Instance();
  unsigned int wrong = 0;
  for (unsigned int id = 1; id <= size.views; ++id) {
    const auto view = manager.GetViewByID(id);
    if (!view || !IsSame(*view->Info(), MakeView(size, id))) ++wrong;
  }
  Check(wrong == 0, std::to_string(wrong) + " views of site " + size.name + " are not as they should be");

  size_t members = 0;
  for (unsigned int id = 1; id <= size.Groups(); ++id) {
    std::vector<std::shared_ptr<CView>> views;
    const auto group = manager.GetViewGroupByID(id);
    if (group) group->GetMemberViews(views);
    members += views.size();
  }
  Check(members == size.views, "the groups of site " + std::string(size.name) + " do not hold its views");
}

}  // namespace bench
