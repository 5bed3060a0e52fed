// SPDX-License-Identifier: Apache-2.0
#include <QString>
#include <limits>

#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "QorviViewPlugin/base/TextConversion.h"
#include "VantBase/Base64.h"
#include "VeltControl/VeltControl.h"
#include "json/Numbers.h"

namespace QorviViewPlugin {
namespace {

// Members are asked for in the order in which clients and servers write them, here and in all of the functions below:
// that is the cheapest for TextCursor.

// What the server calls an e-map in downloaded data.
constexpr int kServerEmap = 7000;

template <class Cursor>
float DecimalText(Cursor& at, std::string_view key) {
  return StringToFloat(at.TextInPlace(key));
}

// The kinds of related resource, by the server's numbers.
constexpr std::pair<ResourceType, RelateResourceType> kRelateTypes[] = {{ResourceTypeCamera, RelateTypeCamera},
                                                                        {ResourceTypeEmap, RelateTypeEmap},
                                                                        {ResourceTypeDoor, RelateTypeDoor},
                                                                        {ResourceType2004, RelateType2004},
                                                                        {ResourceType1027, RelateType1027}};

// The view type of an object that is not shared.
int TypeOfOwner(unsigned int idUser) {
  return idUser == kNoId ? ViewTypePublic : ViewTypePrivate;
}

template <class Cursor>
void ReadDigitalZoom(Cursor& at, Rectangle& box) {
  box.fXTop = DecimalText(at, "Xtop");
  box.fYTop = DecimalText(at, "Ytop");
  box.fXBottom = DecimalText(at, "Xbottom");
  box.fYBottom = DecimalText(at, "Ybottom");
}

template <class Cursor>
void ReadMilliCorners(Cursor& at, Rectangle& corners) {
  corners.fXTop = FromMilli(at.Number("TopX"));
  corners.fYTop = FromMilli(at.Number("TopY"));
  corners.fXBottom = FromMilli(at.Number("BottomX"));
  corners.fYBottom = FromMilli(at.Number("BottomY"));
}

// The cursor stands at the fisheye object. The list of expanded windows has a name of its own in each document; its
// windows are added to those already there.
template <class Cursor>
void ReadFishEye(Cursor& at, std::string_view listKey, CameraGridStruct& window) {
  window.b_enable_fish_eye = true;
  FishEyeInfo& fisheye = window.fisheye_info;
  fisheye.mount_type = at.Number("MountType");
  fisheye.expand_mode = at.Number("ExpandMode");
  fisheye.window_index = at.Number("FishParentNo");
  ReadEach(at, listKey, fisheye.vc_wnd_param, [&at](FisheyeExpandWndParam& param) {
    param.wnd_no = at.Number("No");
    param.pos_x = DecimalText(at, "PosX");
    param.pos_y = DecimalText(at, "PosY");
    param.zoom = DecimalText(at, "Zoom");
  });
}

template <class Cursor>
void ReadCycle(Cursor& at, SingleWndCycle& cycle) {
  const auto group = at.Enter("Cycle");
  cycle.type = static_cast<SingleWndCycleType>(at.Number("Type"));
  cycle.cycle_time = at.Number("CycleTime");
  cycle.cycle_name = at.Text("CycleName");
  ReadEach(at, "ID", cycle.vc_id, [&at](IdPair& resource) {
    resource.first = AsUnsigned(at.Number("SiteID"));
    resource.second = AsUnsigned(at.Number("ResourceID"));
  });
}

template <class Cursor>
void ReadEmap(Cursor& at, CameraGridStruct& window) {
  const auto group = at.Enter("Emap");
  window.map_load_type = static_cast<MapLoadType>(at.Number("LoadMode"));
  window.map_center_x = at.Text("PosX");
  window.map_center_y = at.Text("PosY");
  window.map_scale_size = at.Number("ScaleSize");
  window.map_more_info = at.Text("ExtendInfo");
}

template <class Cursor>
void ReadCenterMark(Cursor& at, CalibrationInfo& mark) {
  const auto group = at.Enter("CenterMark");
  ReadMilliCorners(at, mark.coordinate);
  mark.stream_type = static_cast<ResourceStore::Stream::StreamType>(at.Number("StreamType"));
}

template <class Cursor>
void ReadZoomWindows(Cursor& at, CameraGridStruct& window) {
  const auto group = at.Enter("ZoomWindowList");
  const int zoomMode = at.Number("ZoomMode");
  ReadEach(at, "ZoomWindow", window.local_wins, [&at](LocalWindowInfo& zoomWindow) {
    zoomWindow.ZoomWindowNo = at.Number("No");
    ReadMilliCorners(at, zoomWindow.win_coordinate);
  });
  if (!window.local_wins.empty()) window.zoom_mode = static_cast<ZoomMode>(zoomMode);
}

template <class Cursor>
void ReadPlainKeys(Cursor& at, DocumentOrigin origin, CameraGridStruct& window) {
  window.n_seq_index = StringToInt(at.TextInPlace("SequenceIndex"));
  int type = at.Number("ResourceType");
  if (origin == DocumentOrigin::Download && type == kServerEmap) type = ResourceTypeEmap;
  window.enum_resource_type_ = static_cast<ResourceType>(type);
  window.camera_workstation_id = AsUnsigned(at.Number("SiteID"));
  window.id_element_ = AsUnsigned(at.Number("ResourceID"));
  window.relate_id = AsUnsigned(at.Number("RelateResourceID"));
  window.relate_name = at.Text("RelateResourceName");
  window.relate_type = RelateTypeFromServer(at.Number("RelateResourceType"));
  window.extend_resource = at.Text("ExtendResource");
  window.uIndex = SignExtended(at.Number("WindowNo"));
  ReadDigitalZoom(at, window.struRect);
  window.uPresetIndex = SignExtended(at.Number("PresetPointIndex"));
  window.uCruiseIndex = SignExtended(at.Number("CruiseIndex"));
  window.uTrackIndex = SignExtended(at.Number("TrackIndex"));
  window.stream_type = static_cast<ResourceStore::Stream::StreamType>(at.Number("StreamType"));
}

template <class Cursor>
void ReadWindow(Cursor& at, DocumentOrigin origin, CameraGridStruct& window) {
  ReadPlainKeys(at, origin, window);
  if (at.Count("FishEye") == 1) {
    const auto group = at.Enter("FishEye");
    ReadFishEye(at, "FishEyeInfo", window);
  }
  if (at.Count("Cycle") == 1) ReadCycle(at, window.single_cycle);
  if (window.enum_resource_type_ == ResourceTypeEmap) {
    ReadEmap(at, window);
  } else {
    at.PassOver("Emap");
  }
  window.enable_calibration = at.Count("CenterMark") >= 1;
  if (window.enable_calibration) ReadCenterMark(at, window.calibration_info);
  // Of other resource types zoom windows are not kept.
  if (window.enum_resource_type_ == ResourceTypeCamera) {
    ReadZoomWindows(at, window);
  } else {
    at.PassOver("ZoomWindowList");
  }
  if (at.Count("RelatedZoomWindow") > 0) {
    const auto group = at.Enter("RelatedZoomWindow");
    window.relate_view_win_no = at.Text("ViewItemWindowNo");
    window.relate_draw_box_no = at.Number("ZoomWindowNo");
  }
  if (origin == DocumentOrigin::Download) ReadExtendInfo(at.Text("ExtendInfo"), window);
}

template <class Cursor>
void ReadPage(Cursor& at, DocumentOrigin origin, unsigned int idView, ViewPage& page) {
  page.nSpliteType = at.Number("SpliteType");
  const std::string customSplit = at.Text("CustomSplite");
  if (!customSplit.empty()) page.strCustomSplite = Vant::Base::Encrypt::Base64Decode(customSplit);
  ReadEach(at, "PlanViewItem", page.vcWindows, [&](CameraGridStruct& window) {
    window.idView = idView;
    ReadWindow(at, origin, window);
  });
}

// An e-map coordinate as the model keeps it: the text of the number at `path`, "nan" when there is none.
std::string CoordinateText(NetLink::CRapidJsonProto& document, std::string_view path) {
  const float value = document.get_float_v(path, std::numeric_limits<float>::quiet_NaN());
  return VeltControl::QStringToString(QString::number(static_cast<double>(value), 'g', 6));
}

template <class Cursor>
ViewInfo ReadViewAt(Cursor& element, DocumentOrigin origin) {
  ViewInfo view;
  view.idView = AsUnsigned(element.Number("ID"));
  view.strGUID = element.Text("GUID");
  view.strName = element.Text("Name");
  view.idViewGroup = AsUnsigned(element.Number("ViewGroupID"));
  view.idUser = AsUnsigned(element.Number("UserID"));
  view.enumViewType = TypeOfOwner(view.idUser);
  view.nSequenceIndex = element.Number("SequenceIndex");
  view.nAutoCycle = element.Number("AutoCycle");
  view.nCycleTime = element.Number("CycleTime");
  if (origin == DocumentOrigin::Download) {
    view.bShared = element.Number("SharedUserID") != -1;
    if (view.bShared) view.enumViewType = ViewTypeShared;
    view.strSharedUserName = element.Text("SharedUserName");
  }
  view.nChangeNumber = ReadChangeNumber(element.TextInPlace("ChangeNumber"));
  ReadEach(element, "PlanPages", view.vcPages, [&](ViewPage& page) { ReadPage(element, origin, view.idView, page); });
  view.nMethod = element.Number("Method", ChangeAdded);
  return view;
}

}  // namespace

ViewInfo ReadView(PathCursor& element, DocumentOrigin origin) {
  return ReadViewAt(element, origin);
}
ViewInfo ReadView(TextCursor& element, DocumentOrigin origin) {
  return ReadViewAt(element, origin);
}

ViewGroupInfo ReadViewGroup(PathCursor& element, DocumentOrigin origin) {
  ViewGroupInfo group;
  group.idViewGroup = AsUnsigned(element.Number("ID"));
  group.strName = element.Text("Name");
  group.idParent = AsUnsigned(element.Number("ParentViewGroupID"));
  group.idUser = AsUnsigned(element.Number("UserID"));
  group.enumViewType = TypeOfOwner(group.idUser);
  if (origin == DocumentOrigin::Download) {
    group.bShared = element.Number("IsSharedView") == 1;
    if (group.bShared) group.enumViewType = ViewTypeShared;
  }
  group.nSequenceIndex = element.Number("SequenceIndex");
  group.nChangeNumber = ReadChangeNumber(element.TextInPlace("ChangeNumber"));
  group.nMethod = element.Number("Method", ChangeAdded);
  return group;
}

void ReadViewGroups(const NetLink::CRapidJsonProto& reply, DocumentOrigin origin, std::vector<ViewGroupInfo>& groups) {
  PathCursor at(reply, "/ResponseStatus/Data/ViewGroupList/");
  ReadEach(at, "ViewGroup", groups, [&](ViewGroupInfo& group) { group = ReadViewGroup(at, origin); });
}

ChangeNumber ReadChangeNumber(std::string_view text) {
  return json::WholeNumber<ChangeNumber>(text).value_or(0);
}

void ReadExtendInfo(const std::string& extendInfo, CameraGridStruct& window) {
  if (extendInfo.empty()) return;
  NetLink::CRapidJsonProto document;
  document.set_str(extendInfo);
  if (document.get_cnt("/playParams/DigitZoom") == 1) {
    PathCursor at(document, "/playParams/DigitZoom/");
    ReadDigitalZoom(at, window.struRect);
  } else if (document.get_cnt("/playParams/FishEye") == 1) {
    PathCursor at(document, "/playParams/FishEye/");
    // In this text the server spells the list's name so.
    ReadFishEye(at, "FiehEyeInfo", window);
  } else if (document.get_cnt("/Zoom") == 1) {
    window.map_scale_size = document.get_int_v("/Zoom", -1);
    window.map_load_type = MapLoadTypeDefault;
    window.map_center_x = CoordinateText(document, "/coordinate[1]");
    window.map_center_y = CoordinateText(document, "/coordinate[2]");
    window.enum_resource_type_ = ResourceTypeEmap;
  }
}

RelateResourceType RelateTypeFromServer(int serverType) {
  for (const auto& [server, model] : kRelateTypes) {
    if (server == serverType) return model;
  }
  return static_cast<RelateResourceType>(serverType);
}

int RelateTypeToServerNumber(RelateResourceType type) {
  for (const auto& [server, model] : kRelateTypes) {
    if (model == type) return server;
  }
  return type;
}

}  // namespace QorviViewPlugin
