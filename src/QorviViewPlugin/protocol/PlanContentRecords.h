// SPDX-License-Identifier: Apache-2.0
// What a plan consists of: pages of windows, each with its extras. Key names are the host's, mixed conventions
// included.
#pragma once

#include "QorviViewPlugin/protocol/JsonRecord.h"

namespace QorviViewPlugin_view_plugin_protocol {

// clang-format off

// One expanded view of a fisheye camera; positions and zoom are decimal texts.
#define QORVI_FISHEYE_WND_PARAM_FIELDS(FIELD) \
  FIELD(int, WndNo) \
  FIELD(std::string, PosX) \
  FIELD(std::string, PosY) \
  FIELD(std::string, Zoom)
QORVI_RECORD(FisheyeWndParam, QORVI_FISHEYE_WND_PARAM_FIELDS)
#undef QORVI_FISHEYE_WND_PARAM_FIELDS

#define QORVI_FISH_EYE_INFO_FIELDS(FIELD) \
  FIELD(bool, is_fisheye_open) \
  FIELD(int, mount_type) \
  FIELD(int, expand_mode) \
  FIELD(int, window_no) \
  FIELD(std::vector<QorviViewPlugin_view_plugin_protocol::FisheyeWndParam>, FisheyeWndParam)
QORVI_RECORD(FishEyeInfo, QORVI_FISH_EYE_INFO_FIELDS)
#undef QORVI_FISH_EYE_INFO_FIELDS

#define QORVI_CYCLE_RESOURCE_ID_FIELDS(FIELD) \
  FIELD(std::string, SiteID) \
  FIELD(std::string, ResourceID) \
  FIELD(std::string, ResourceName)
QORVI_RECORD(CycleResourceID, QORVI_CYCLE_RESOURCE_ID_FIELDS)
#undef QORVI_CYCLE_RESOURCE_ID_FIELDS

// A window that cycles through resources by itself.
#define QORVI_CYCLE_INFO_FIELDS(FIELD) \
  FIELD(int, cycle_type) \
  FIELD(int, cycle_time) \
  FIELD(std::string, CycleName) \
  FIELD(std::vector<QorviViewPlugin_view_plugin_protocol::CycleResourceID>, CycleResourceID)
QORVI_RECORD(CycleInfo, QORVI_CYCLE_INFO_FIELDS)
#undef QORVI_CYCLE_INFO_FIELDS

// How a map is placed in its window.
#define QORVI_EMAP_FIELDS(FIELD) \
  FIELD(int, LoadMode) \
  FIELD(std::string, PosX) \
  FIELD(std::string, PosY) \
  FIELD(int, ScaleSize) \
  FIELD(std::string, ExtendInfo)
QORVI_RECORD(Emap, QORVI_EMAP_FIELDS)
#undef QORVI_EMAP_FIELDS

// Corners in thousandths.
#define QORVI_CENTER_MARK_FIELDS(FIELD) \
  FIELD(int, TopX) \
  FIELD(int, TopY) \
  FIELD(int, BottomX) \
  FIELD(int, BottomY) \
  FIELD(int, StreamType)
QORVI_RECORD(CenterMark, QORVI_CENTER_MARK_FIELDS)
#undef QORVI_CENTER_MARK_FIELDS

// Corners in thousandths.
#define QORVI_ZOOM_WINDOW_FIELDS(FIELD) \
  FIELD(int, No) \
  FIELD(int, TopX) \
  FIELD(int, TopY) \
  FIELD(int, BottomX) \
  FIELD(int, BottomY)
QORVI_RECORD(ZoomWindow, QORVI_ZOOM_WINDOW_FIELDS)
#undef QORVI_ZOOM_WINDOW_FIELDS

#define QORVI_ZOOM_WINDOW_LIST_FIELDS(FIELD) \
  FIELD(int, ZoomMode) \
  FIELD(std::vector<QorviViewPlugin_view_plugin_protocol::ZoomWindow>, ZoomWindow)
QORVI_RECORD(ZoomWindowList, QORVI_ZOOM_WINDOW_LIST_FIELDS)
#undef QORVI_ZOOM_WINDOW_LIST_FIELDS

// A zoom window drawn in another item; -1 for none.
#define QORVI_RELATED_ZOOM_WINDOW_FIELDS(FIELD) \
  FIELD(std::string, ViewItemWindowNo) \
  FIELD(int, ZoomWindowNo, -1)
QORVI_RECORD(RelatedZoomWindow, QORVI_RELATED_ZOOM_WINDOW_FIELDS)
#undef QORVI_RELATED_ZOOM_WINDOW_FIELDS

// One window of a page. The rectangle is four decimal texts.
#define QORVI_PLAN_ITEM_FIELDS(FIELD) \
  FIELD(int, Sequence) \
  FIELD(int, ResourceType) \
  FIELD(std::string, ResourceID) \
  FIELD(std::string, SiteID) \
  FIELD(std::string, ResourceName) \
  FIELD(int, OnlineStatus) \
  FIELD(std::string, ResourceCapability) \
  FIELD(int, StreamType) \
  FIELD(int, ConnectType) \
  FIELD(int, CameraType) \
  FIELD(int, PresetId) \
  FIELD(std::string, PresetName) \
  FIELD(bool, IsDelete) \
  FIELD(std::string, PermissionItem) \
  FIELD(int, RelateResourceType, -1) \
  FIELD(int, RelateResourceID, -1) \
  FIELD(std::string, RelateResourceName) \
  FIELD(std::string, ExtendResource) \
  FIELD(int, DeviceID) \
  FIELD(int, WindowNo) \
  FIELD(std::string, Xtop, "-1.0") \
  FIELD(std::string, Ytop, "-1.0") \
  FIELD(std::string, Xbottom, "-1.0") \
  FIELD(std::string, Ybottom, "-1.0") \
  FIELD(int, PresetPointIndex) \
  FIELD(int, CruiseIndex) \
  FIELD(int, TrackIndex) \
  FIELD(FishEyeInfo, FishEye) \
  FIELD(QorviViewPlugin_view_plugin_protocol::Emap, Emap) \
  FIELD(QorviViewPlugin_view_plugin_protocol::CenterMark, CenterMark) \
  FIELD(QorviViewPlugin_view_plugin_protocol::ZoomWindowList, ZoomWindowList) \
  FIELD(QorviViewPlugin_view_plugin_protocol::RelatedZoomWindow, RelatedZoomWindow) \
  FIELD(QorviViewPlugin_view_plugin_protocol::CycleInfo, CycleInfo)
QORVI_RECORD(PlanItem, QORVI_PLAN_ITEM_FIELDS)
#undef QORVI_PLAN_ITEM_FIELDS

// One page of a plan.
#define QORVI_PLAN_PAGE_FIELDS(FIELD) \
  FIELD(int, windowDivision) \
  FIELD(std::string, customWindowDivision) \
  FIELD(std::vector<PlanItem>, PlanItems)
QORVI_RECORD(PlanPage, QORVI_PLAN_PAGE_FIELDS)
#undef QORVI_PLAN_PAGE_FIELDS

// clang-format on

}  // namespace QorviViewPlugin_view_plugin_protocol
