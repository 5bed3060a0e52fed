// SPDX-License-Identifier: Apache-2.0
// The records of the view model: values, as the server's documents hold them. An id of all ones means none. Each is one
// list of its fields (FieldList.h), from which its structure, its wrapper for hosts and its comparison come.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "QorviViewPlugin/base/FieldList.h"
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

// The server counts its changes from 1 and says with each object, list and answer which change was its last; 0 where
// nothing was said.
using ChangeNumber = unsigned long long;

// (site id, resource id)
using IdPair = std::pair<unsigned int, unsigned int>;

// --- Records; those that ViewExport.h wraps for hosts first

// A box by its top and bottom corners.
#define QORVI_MODEL_RECTANGLE(FIELD) \
  FIELD(float, fXTop, -1.0f)         \
  FIELD(float, fYTop, -1.0f)         \
  FIELD(float, fXBottom, -1.0f)      \
  FIELD(float, fYBottom, -1.0f)
QORVI_STRUCT(Rectangle, QORVI_MODEL_RECTANGLE)

// The centre mark of a window.
#define QORVI_MODEL_CALIBRATION_INFO(FIELD) \
  FIELD(Rectangle, coordinate)              \
  FIELD(ResourceStore::Stream::StreamType, stream_type, ResourceStore::Stream::StreamTypeDefault)
QORVI_STRUCT(CalibrationInfo, QORVI_MODEL_CALIBRATION_INFO)

// One expanded view of a fisheye camera.
#define QORVI_MODEL_FISHEYE_EXPAND_WND_PARAM(FIELD) \
  FIELD(int, wnd_no)                                \
  FIELD(float, pos_x)                               \
  FIELD(float, pos_y)                               \
  FIELD(float, zoom)
QORVI_STRUCT(FisheyeExpandWndParam, QORVI_MODEL_FISHEYE_EXPAND_WND_PARAM)

#define QORVI_MODEL_FISH_EYE_INFO(FIELD) \
  FIELD(int, mount_type)                 \
  FIELD(int, expand_mode)                \
  FIELD(int, window_index)               \
  FIELD(std::vector<FisheyeExpandWndParam>, vc_wnd_param)
QORVI_STRUCT(FishEyeInfo, QORVI_MODEL_FISH_EYE_INFO)

// One zoom window drawn inside a window.
#define QORVI_MODEL_LOCAL_WINDOW_INFO(FIELD) \
  FIELD(int, ZoomWindowNo)                   \
  FIELD(Rectangle, win_coordinate)
QORVI_STRUCT(LocalWindowInfo, QORVI_MODEL_LOCAL_WINDOW_INFO)

// A window that cycles through several resources by itself.
#define QORVI_MODEL_SINGLE_WND_CYCLE(FIELD)              \
  FIELD(SingleWndCycleType, type, SingleWndCycleCameras) \
  FIELD(int, cycle_time)                                 \
  FIELD(std::string, cycle_name)                         \
  FIELD(std::vector<IdPair>, vc_id)
QORVI_STRUCT(SingleWndCycle, QORVI_MODEL_SINGLE_WND_CYCLE)

// One window of a page. uIndex is its number within the page, camera_workstation_id the site of the element, struRect
// the digital-zoom box.
#define QORVI_MODEL_CAMERA_GRID_STRUCT(FIELD)                                                     \
  FIELD(unsigned int, idView, kNoId)                                                              \
  FIELD(unsigned long long, uIndex)                                                               \
  FIELD(int, n_seq_index, -1)                                                                     \
  FIELD(unsigned int, camera_workstation_id, kNoId)                                               \
  FIELD(unsigned int, id_element_, kNoId)                                                         \
  FIELD(ResourceType, enum_resource_type_, ResourceTypeCamera)                                    \
  FIELD(bool, bPTZConfigured)                                                                     \
  FIELD(Rectangle, struRect)                                                                      \
  FIELD(unsigned long long, uPresetIndex, ~0ull)                                                  \
  FIELD(unsigned long long, uCruiseIndex, ~0ull)                                                  \
  FIELD(unsigned long long, uTrackIndex, ~0ull)                                                   \
  FIELD(unsigned int, idPOS, kNoId)                                                               \
  FIELD(ResourceStore::Stream::StreamType, stream_type, ResourceStore::Stream::StreamTypeDefault) \
  FIELD(std::string, map_center_x)                                                                \
  FIELD(std::string, map_center_y)                                                                \
  FIELD(int, map_scale_size)                                                                      \
  FIELD(std::string, map_more_info)                                                               \
  FIELD(RelateResourceType, relate_type, RelateTypeNone)                                          \
  FIELD(unsigned int, relate_id, kNoId)                                                           \
  FIELD(std::string, relate_name)                                                                 \
  FIELD(MapLoadType, map_load_type, MapLoadTypeDefault)                                           \
  FIELD(std::string, extend_resource)                                                             \
  FIELD(bool, enable_calibration)                                                                 \
  FIELD(CalibrationInfo, calibration_info)                                                        \
  FIELD(ZoomMode, zoom_mode, ZoomModeDefault)                                                     \
  FIELD(std::vector<LocalWindowInfo>, local_wins)                                                 \
  FIELD(std::string, relate_view_win_no)                                                          \
  FIELD(int, relate_draw_box_no, -1)                                                              \
  FIELD(bool, b_enable_fish_eye)                                                                  \
  FIELD(FishEyeInfo, fisheye_info)                                                                \
  FIELD(SingleWndCycle, single_cycle)
QORVI_STRUCT(CameraGridStruct, QORVI_MODEL_CAMERA_GRID_STRUCT)

// strCustomSplite is the custom split layout, already base64-decoded.
#define QORVI_MODEL_VIEW_PAGE(FIELD)  \
  FIELD(std::string, strCustomSplite) \
  FIELD(int, nSpliteType)             \
  FIELD(std::vector<CameraGridStruct>, vcWindows)
QORVI_STRUCT(ViewPage, QORVI_MODEL_VIEW_PAGE)

// nChangeNumber is that of the object's last change.
#define QORVI_MODEL_VIEW_INFO(FIELD)       \
  FIELD(unsigned int, idView, kNoId)       \
  FIELD(std::string, strGUID)              \
  FIELD(std::string, strName)              \
  FIELD(unsigned int, idViewGroup, kNoId)  \
  FIELD(int, enumViewType, ViewTypePublic) \
  FIELD(unsigned int, idUser, kNoId)       \
  FIELD(long long, nSequenceIndex, -1)     \
  FIELD(int, nAutoCycle)                   \
  FIELD(int, nCycleTime)                   \
  FIELD(std::vector<ViewPage>, vcPages)    \
  FIELD(int, nMethod, ChangeAdded)         \
  FIELD(bool, bShared)                     \
  FIELD(std::string, strSharedUserName)    \
  FIELD(ChangeNumber, nChangeNumber)
QORVI_STRUCT(ViewInfo, QORVI_MODEL_VIEW_INFO)

#define QORVI_MODEL_VIEW_GROUP_INFO(FIELD) \
  FIELD(unsigned int, idViewGroup, kNoId)  \
  FIELD(unsigned int, idUser, kNoId)       \
  FIELD(unsigned int, idParent, kNoId)     \
  FIELD(std::string, strName)              \
  FIELD(int, enumViewType, ViewTypePublic) \
  FIELD(long long, nSequenceIndex, -1)     \
  FIELD(int, nMethod, ChangeAdded)         \
  FIELD(bool, bShared)                     \
  FIELD(ChangeNumber, nChangeNumber)
QORVI_STRUCT(ViewGroupInfo, QORVI_MODEL_VIEW_GROUP_INFO)

}  // namespace QorviViewPlugin
