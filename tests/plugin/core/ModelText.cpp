// SPDX-License-Identifier: Apache-2.0
#include "ModelText.h"

#include <functional>
#include <sstream>
#include <vector>

namespace core_test {

using namespace QorviViewPlugin;

namespace {

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

// Collects "name=actual value" of the fields in which two records differ.
template <class Record>
class Differences {
 public:
  Differences(const Record& base, const Record& actual) : m_base(base), m_actual(actual) {}
  template <class Field>
  Differences& operator()(const char* name, Field field) {
    const std::string value = Show(std::invoke(field, m_actual));
    if (Show(std::invoke(field, m_base)) != value) {
      text += (text.empty() ? "" : " ") + std::string(name) + "=" + value;
    }
    return *this;
  }
  std::string text;

 private:
  const Record& m_base;
  const Record& m_actual;
};

}  // namespace

std::string Difference(const CameraGridStruct& base, const CameraGridStruct& actual) {
  using W = CameraGridStruct;
  Differences<W> differ(base, actual);
  differ("idView", &W::idView)("uIndex", &W::uIndex)("n_seq_index", &W::n_seq_index);
  differ("site", &W::camera_workstation_id)("element", &W::id_element_)("type", &W::enum_resource_type_);
  differ("ptz", &W::bPTZConfigured)("rect", &W::struRect)("preset", &W::uPresetIndex)("cruise", &W::uCruiseIndex);
  differ("track", &W::uTrackIndex)("pos", &W::idPOS)("stream", &W::stream_type);
  differ("center_x", &W::map_center_x)("center_y", &W::map_center_y)("scale", &W::map_scale_size);
  differ("more", &W::map_more_info)("relate_type", &W::relate_type)("relate_id", &W::relate_id);
  differ("relate_name", &W::relate_name)("load", &W::map_load_type)("extend", &W::extend_resource);
  differ("mark", &W::enable_calibration);
  differ("mark_box", [](const W& window) { return window.calibration_info.coordinate; });
  differ("mark_stream", [](const W& window) { return window.calibration_info.stream_type; });
  differ("zoom_mode", &W::zoom_mode)("zooms", &W::local_wins)("related_window", &W::relate_view_win_no);
  differ("related_box", &W::relate_draw_box_no)("has_fisheye", &W::b_enable_fish_eye);
  return differ("fisheye", &W::fisheye_info)("cycle", &W::single_cycle).text;
}

std::string Difference(const ViewInfo& base, const ViewInfo& actual) {
  using V = ViewInfo;
  Differences<V> differ(base, actual);
  differ("idView", &V::idView)("guid", &V::strGUID)("name", &V::strName)("group", &V::idViewGroup);
  differ("type", &V::enumViewType)("user", &V::idUser)("sequence", &V::nSequenceIndex)("auto", &V::nAutoCycle);
  differ("time", &V::nCycleTime)("pages", &V::vcPages)("method", &V::nMethod)("shared", &V::bShared);
  return differ("sharer", &V::strSharedUserName)("number", &V::nChangeNumber).text;
}

std::string Difference(const ViewGroupInfo& base, const ViewGroupInfo& actual) {
  using G = ViewGroupInfo;
  Differences<G> differ(base, actual);
  differ("idViewGroup", &G::idViewGroup)("user", &G::idUser)("parent", &G::idParent)("name", &G::strName);
  differ("type", &G::enumViewType)("sequence", &G::nSequenceIndex)("method", &G::nMethod)("shared", &G::bShared);
  return differ("number", &G::nChangeNumber).text;
}

}  // namespace core_test
