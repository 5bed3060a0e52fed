// SPDX-License-Identifier: Apache-2.0
#include "ModelText.h"

#include <sstream>
#include <utility>
#include <vector>

namespace core_test {

using namespace QorviViewPlugin;

namespace {

using Fields = std::vector<std::pair<const char*, std::string>>;

template <class Value>
std::string Show(const Value& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}
std::string Show(const std::string& text) {
  return "'" + text + "'";
}
std::string Show(const Rectangle& box) {
  return "(" + Show(box.fXTop) + "," + Show(box.fYTop) + "," + Show(box.fXBottom) + "," + Show(box.fYBottom) + ")";
}

std::string Show(const FishEyeInfo& fisheye) {
  std::string text = Show(fisheye.mount_type) + "/" + Show(fisheye.expand_mode) + "/" + Show(fisheye.window_index);
  for (const auto& param : fisheye.vc_wnd_param) {
    text += "+" + Show(param.wnd_no) + ":" + Show(param.pos_x) + "," + Show(param.pos_y) + "," + Show(param.zoom);
  }
  return text;
}

std::string Show(const SingleWndCycle& cycle) {
  std::string text = Show(cycle.type) + "/" + Show(cycle.cycle_time) + "/" + Show(cycle.cycle_name);
  for (const auto& [site, resource] : cycle.vc_id) text += "+" + Show(site) + ":" + Show(resource);
  return text;
}

std::string Show(const std::vector<LocalWindowInfo>& windows) {
  std::string text;
  for (const auto& window : windows) text += "+" + Show(window.ZoomWindowNo) + Show(window.win_coordinate);
  return text;
}

std::string Show(const std::vector<ViewPage>& pages) {
  std::string text;
  for (const auto& page : pages) {
    text += "[" + Show(page.nSpliteType) + " " + Show(page.strCustomSplite) + " windows " +
            Show(page.vcWindows.size()) + "]";
  }
  return text;
}

Fields FieldsOf(const CameraGridStruct& w) {
  return {{"idView", Show(w.idView)},
          {"uIndex", Show(w.uIndex)},
          {"n_seq_index", Show(w.n_seq_index)},
          {"site", Show(w.camera_workstation_id)},
          {"element", Show(w.id_element_)},
          {"type", Show(w.enum_resource_type_)},
          {"ptz", Show(w.bPTZConfigured)},
          {"rect", Show(w.struRect)},
          {"preset", Show(w.uPresetIndex)},
          {"cruise", Show(w.uCruiseIndex)},
          {"track", Show(w.uTrackIndex)},
          {"pos", Show(w.idPOS)},
          {"stream", Show(w.stream_type)},
          {"center_x", Show(w.map_center_x)},
          {"center_y", Show(w.map_center_y)},
          {"scale", Show(w.map_scale_size)},
          {"more", Show(w.map_more_info)},
          {"relate_type", Show(w.relate_type)},
          {"relate_id", Show(w.relate_id)},
          {"relate_name", Show(w.relate_name)},
          {"load", Show(w.map_load_type)},
          {"extend", Show(w.extend_resource)},
          {"mark", Show(w.enable_calibration)},
          {"mark_box", Show(w.calibration_info.coordinate)},
          {"mark_stream", Show(w.calibration_info.stream_type)},
          {"zoom_mode", Show(w.zoom_mode)},
          {"zooms", Show(w.local_wins)},
          {"related_window", Show(w.relate_view_win_no)},
          {"related_box", Show(w.relate_draw_box_no)},
          {"has_fisheye", Show(w.b_enable_fish_eye)},
          {"fisheye", Show(w.fisheye_info)},
          {"cycle", Show(w.single_cycle)}};
}

Fields FieldsOf(const ViewInfo& v) {
  return {{"idView", Show(v.idView)},           {"guid", Show(v.strGUID)},      {"name", Show(v.strName)},
          {"group", Show(v.idViewGroup)},       {"type", Show(v.enumViewType)}, {"user", Show(v.idUser)},
          {"sequence", Show(v.nSequenceIndex)}, {"auto", Show(v.nAutoCycle)},   {"time", Show(v.nCycleTime)},
          {"pages", Show(v.vcPages)},           {"method", Show(v.nMethod)},    {"shared", Show(v.bShared)},
          {"sharer", Show(v.strSharedUserName)}};
}

Fields FieldsOf(const ViewGroupInfo& g) {
  return {{"idViewGroup", Show(g.idViewGroup)}, {"user", Show(g.idUser)},
          {"parent", Show(g.idParent)},         {"name", Show(g.strName)},
          {"type", Show(g.enumViewType)},       {"sequence", Show(g.nSequenceIndex)},
          {"method", Show(g.nMethod)},          {"shared", Show(g.bShared)}};
}

std::string Difference(const Fields& base, const Fields& actual) {
  std::string text;
  for (size_t n = 0; n < base.size(); ++n) {
    if (base[n].second == actual[n].second) continue;
    text += (text.empty() ? "" : " ") + std::string(base[n].first) + "=" + actual[n].second;
  }
  return text;
}

}  // namespace

std::string Difference(const CameraGridStruct& base, const CameraGridStruct& actual) {
  return Difference(FieldsOf(base), FieldsOf(actual));
}
std::string Difference(const ViewInfo& base, const ViewInfo& actual) {
  return Difference(FieldsOf(base), FieldsOf(actual));
}
std::string Difference(const ViewGroupInfo& base, const ViewGroupInfo& actual) {
  return Difference(FieldsOf(base), FieldsOf(actual));
}

}  // namespace core_test
