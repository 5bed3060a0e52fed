// SPDX-License-Identifier: Apache-2.0
// The content of a plan as the host sees it: pages, their windows, and what each window carries. Keys are the host's,
// letter for letter. Some coordinates travel as decimal texts, others as integers in thousandths.
#pragma once

#include "QorviViewPlugin/protocol/JsonRecord.h"

namespace QorviViewPlugin_view_plugin_protocol {

using QorviVideoComm::Boolean;
using QorviVideoComm::Integer;
using QorviVideoComm::Sequence;
using QorviVideoComm::Text;

#define QORVI_FISHEYE_WND_PARAM(FIELD) \
  FIELD(Integer, WndNo)                \
  FIELD(Text, PosX)                    \
  FIELD(Text, PosY)                    \
  FIELD(Text, Zoom)
QORVI_RECORD(FisheyeWndParam, QORVI_FISHEYE_WND_PARAM)

#define QORVI_FISH_EYE_INFO(FIELD) \
  FIELD(Boolean, is_fisheye_open)  \
  FIELD(Integer, mount_type)       \
  FIELD(Integer, expand_mode)      \
  FIELD(Integer, window_no)        \
  FIELD(Sequence<struct FisheyeWndParam>, FisheyeWndParam)
QORVI_RECORD(FishEyeInfo, QORVI_FISH_EYE_INFO)

#define QORVI_CYCLE_RESOURCE_ID(FIELD) \
  FIELD(Text, SiteID)                  \
  FIELD(Text, ResourceID)              \
  FIELD(Text, ResourceName)
QORVI_RECORD(CycleResourceID, QORVI_CYCLE_RESOURCE_ID)

// A window that cycles through resources.
#define QORVI_CYCLE_INFO(FIELD) \
  FIELD(Integer, cycle_type)    \
  FIELD(Integer, cycle_time)    \
  FIELD(Text, CycleName)        \
  FIELD(Sequence<struct CycleResourceID>, CycleResourceID)
QORVI_RECORD(CycleInfo, QORVI_CYCLE_INFO)

// How a map is placed in its window.
#define QORVI_EMAP(FIELD)   \
  FIELD(Integer, LoadMode)  \
  FIELD(Text, PosX)         \
  FIELD(Text, PosY)         \
  FIELD(Integer, ScaleSize) \
  FIELD(Text, ExtendInfo)
QORVI_RECORD(Emap, QORVI_EMAP)

// Corners in thousandths.
#define QORVI_CENTER_MARK(FIELD) \
  FIELD(Integer, TopX)           \
  FIELD(Integer, TopY)           \
  FIELD(Integer, BottomX)        \
  FIELD(Integer, BottomY)        \
  FIELD(Integer, StreamType)
QORVI_RECORD(CenterMark, QORVI_CENTER_MARK)

// Corners in thousandths.
#define QORVI_ZOOM_WINDOW(FIELD) \
  FIELD(Integer, No)             \
  FIELD(Integer, TopX)           \
  FIELD(Integer, TopY)           \
  FIELD(Integer, BottomX)        \
  FIELD(Integer, BottomY)
QORVI_RECORD(ZoomWindow, QORVI_ZOOM_WINDOW)

#define QORVI_ZOOM_WINDOW_LIST(FIELD) \
  FIELD(Integer, ZoomMode)            \
  FIELD(Sequence<struct ZoomWindow>, ZoomWindow)
QORVI_RECORD(ZoomWindowList, QORVI_ZOOM_WINDOW_LIST)

// Link to a zoom window drawn in another window; number -1 is none.
#define QORVI_RELATED_ZOOM_WINDOW(FIELD) \
  FIELD(Text, ViewItemWindowNo)          \
  FIELD(Integer, ZoomWindowNo, -1)
QORVI_RECORD(RelatedZoomWindow, QORVI_RELATED_ZOOM_WINDOW)

// One window and the resource shown in it. By default a window has no related resource (-1) and no rectangle ("-1.0").
#define QORVI_PLAN_ITEM(FIELD)                       \
  FIELD(Integer, Sequence)                           \
  FIELD(Integer, ResourceType)                       \
  FIELD(Text, ResourceID)                            \
  FIELD(Text, SiteID)                                \
  FIELD(Text, ResourceName)                          \
  FIELD(Integer, OnlineStatus)                       \
  FIELD(Text, ResourceCapability)                    \
  FIELD(Integer, StreamType)                         \
  FIELD(Integer, ConnectType)                        \
  FIELD(Integer, CameraType)                         \
  FIELD(Integer, PresetId)                           \
  FIELD(Text, PresetName)                            \
  FIELD(Boolean, IsDelete)                           \
  FIELD(Text, PermissionItem)                        \
  FIELD(Integer, RelateResourceType, -1)             \
  FIELD(Integer, RelateResourceID, -1)               \
  FIELD(Text, RelateResourceName)                    \
  FIELD(Text, ExtendResource)                        \
  FIELD(Integer, DeviceID)                           \
  FIELD(Integer, WindowNo)                           \
  FIELD(Text, Xtop, "-1.0")                          \
  FIELD(Text, Ytop, "-1.0")                          \
  FIELD(Text, Xbottom, "-1.0")                       \
  FIELD(Text, Ybottom, "-1.0")                       \
  FIELD(Integer, PresetPointIndex)                   \
  FIELD(Integer, CruiseIndex)                        \
  FIELD(Integer, TrackIndex)                         \
  FIELD(FishEyeInfo, FishEye)                        \
  FIELD(struct Emap, Emap)                           \
  FIELD(struct CenterMark, CenterMark)               \
  FIELD(struct ZoomWindowList, ZoomWindowList)       \
  FIELD(struct RelatedZoomWindow, RelatedZoomWindow) \
  FIELD(struct CycleInfo, CycleInfo)
QORVI_RECORD(PlanItem, QORVI_PLAN_ITEM)

#define QORVI_PLAN_PAGE(FIELD)      \
  FIELD(Integer, windowDivision)    \
  FIELD(Text, customWindowDivision) \
  FIELD(Sequence<PlanItem>, PlanItems)
QORVI_RECORD(PlanPage, QORVI_PLAN_PAGE)

}  // namespace QorviViewPlugin_view_plugin_protocol
