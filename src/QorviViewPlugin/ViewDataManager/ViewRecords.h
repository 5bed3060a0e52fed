// SPDX-License-Identifier: Apache-2.0
// The records of the view model: values, as the server's documents hold them. An id of all ones means none.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ResourceStore/Stream.h"

namespace QorviViewPlugin {

// What a window shows. Numbers not named here are carried through unchanged.
enum ResourceType : int {
  ResourceTypeNone = 100,
  ResourceTypeCamera = 1001,
  ResourceTypeDoor = 1002,
  ResourceTypeElevator = 1005,
  ResourceTypeRadar = 1006,
  ResourceType1012 = 1012,
  ResourceType1027 = 1027,
  ResourceType2004 = 2004,
  ResourceType5001 = 5001,
  ResourceTypeEmap = 7001,
  ResourceTypeWebPage = 25001,
  ResourceType29000 = 29000,
};

// The kind of the resource that a window is related to; other numbers are carried through unchanged.
enum RelateResourceType : int {
  RelateTypeNone = -1,
  RelateTypeCamera = 0,
  RelateTypeEmap = 1,
  RelateTypeDoor = 4,
  RelateType2004 = 5,
  RelateType1027 = 8,
};

enum MapLoadType : int { MapLoadTypeDefault = 1 };
enum ZoomMode : int { ZoomModeDefault = 0 };
enum SingleWndCycleType : int { SingleWndCycleCameras = 0, SingleWndCycleAreas = 1 };

// What a change record does to the cache.
enum ChangeMethod : int { ChangeAdded = 0, ChangeModified = 1, ChangeDeleted = 2 };

// enumViewType of views and groups.
enum ViewType : int { ViewTypePublic = 0, ViewTypePrivate = 1, ViewTypeShared = 2 };

inline constexpr unsigned int kNoId = 0xFFFFFFFFu;

// The server counts its changes from 1 and says with each object, list and answer which change it goes back to; 0 where
// nothing was said.
using ChangeNumber = unsigned long long;

// A box by its top and bottom corners.
struct Rectangle {
  float fXTop = -1.0f;
  float fYTop = -1.0f;
  float fXBottom = -1.0f;
  float fYBottom = -1.0f;
};

// The centre mark of a window.
struct CalibrationInfo {
  Rectangle coordinate;
  ResourceStore::Stream::StreamType stream_type = ResourceStore::Stream::StreamTypeDefault;
};

// One expanded view of a fisheye camera.
struct FisheyeExpandWndParam {
  int wnd_no = 0;
  float pos_x = 0.0f;
  float pos_y = 0.0f;
  float zoom = 0.0f;
};

struct FishEyeInfo {
  int mount_type = 0;
  int expand_mode = 0;
  int window_index = 0;
  std::vector<FisheyeExpandWndParam> vc_wnd_param;
};

// One zoom window drawn inside a window.
struct LocalWindowInfo {
  int ZoomWindowNo = 0;
  Rectangle win_coordinate;
};

// A window that cycles through several resources by itself; each pair is (site id, resource id).
struct SingleWndCycle {
  SingleWndCycleType type = SingleWndCycleCameras;
  int cycle_time = 0;
  std::string cycle_name;
  std::vector<std::pair<unsigned int, unsigned int>> vc_id;
};

// One window of a page.
struct CameraGridStruct {
  unsigned int idView = kNoId;
  unsigned long long uIndex = 0;  // window number within the page
  int n_seq_index = -1;
  unsigned int camera_workstation_id = kNoId;  // site of the element
  unsigned int id_element_ = kNoId;
  ResourceType enum_resource_type_ = ResourceTypeCamera;
  bool bPTZConfigured = false;
  Rectangle struRect;  // digital-zoom box
  unsigned long long uPresetIndex = ~0ull;
  unsigned long long uCruiseIndex = ~0ull;
  unsigned long long uTrackIndex = ~0ull;
  unsigned int idPOS = kNoId;
  ResourceStore::Stream::StreamType stream_type = ResourceStore::Stream::StreamTypeDefault;
  std::string map_center_x;
  std::string map_center_y;
  int map_scale_size = 0;
  std::string map_more_info;
  RelateResourceType relate_type = RelateTypeNone;
  unsigned int relate_id = kNoId;
  std::string relate_name;
  MapLoadType map_load_type = MapLoadTypeDefault;
  std::string extend_resource;
  bool enable_calibration = false;
  CalibrationInfo calibration_info;
  ZoomMode zoom_mode = ZoomModeDefault;
  std::vector<LocalWindowInfo> local_wins;
  std::string relate_view_win_no;
  int relate_draw_box_no = -1;
  bool b_enable_fish_eye = false;
  FishEyeInfo fisheye_info;
  SingleWndCycle single_cycle;
};

struct ViewPage {
  std::string strCustomSplite;  // custom split layout, already base64-decoded
  int nSpliteType = 0;
  std::vector<CameraGridStruct> vcWindows;
};

struct ViewInfo {
  unsigned int idView = kNoId;
  std::string strGUID;
  std::string strName;
  unsigned int idViewGroup = kNoId;
  int enumViewType = ViewTypePublic;
  unsigned int idUser = kNoId;
  long long nSequenceIndex = -1;
  int nAutoCycle = 0;
  int nCycleTime = 0;
  std::vector<ViewPage> vcPages;
  int nMethod = ChangeAdded;
  bool bShared = false;
  std::string strSharedUserName;
  ChangeNumber nChangeNumber = 0;  // of the object's last change
};

struct ViewGroupInfo {
  unsigned int idViewGroup = kNoId;
  unsigned int idUser = kNoId;
  unsigned int idParent = kNoId;
  std::string strName;
  int enumViewType = ViewTypePublic;
  long long nSequenceIndex = -1;
  int nMethod = ChangeAdded;
  bool bShared = false;
  ChangeNumber nChangeNumber = 0;  // of the object's last change
};

}  // namespace QorviViewPlugin
