// SPDX-License-Identifier: Apache-2.0
// The view model for hosts that link the library: wrappers around its records, and snapshots of cached views and
// groups.
//
// Every record wrapper holds one record by shared ownership. The default constructor makes a new record, the
// constructor from a record copies it, the one from a pointer shares it (it must not be empty); copies of a wrapper
// share the record. GetVal_ answers a copy of a field, SetVal_ stores one; a field that is a record itself comes and
// goes as a wrapper of its own, holding a copy (the wrapper given to SetVal_ must not be empty). Wrappers do not lock:
// who writes a record while another thread reads it must serialise that.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "QorviViewPlugin/base/Export.h"

namespace QorviViewPlugin {

class CView;
class CViewGroup;

// What every record wrapper has. The definitions come from the records' lists of fields; the declarations are written
// out for those who read this header, and a test holds the two together.
#define QORVI_RECORD_WRAPPER(Record)                \
 public:                                            \
  C##Record();                                      \
  explicit C##Record(const Record& record);         \
  explicit C##Record(std::shared_ptr<Record> data); \
  C##Record(const C##Record& other);                \
  C##Record& operator=(const C##Record& other);     \
  virtual ~C##Record();                             \
  std::shared_ptr<Record> GetDataPtr() const;       \
                                                    \
 private:                                           \
  std::shared_ptr<Record> m_data;                   \
                                                    \
 public:

#define QORVI_VALUE(Type, field) \
  Type GetVal_##field() const;   \
  void SetVal_##field(const Type& value);

#define QORVI_WRAPPED_VALUE(Wrapper, field)        \
  std::shared_ptr<Wrapper> GetVal_##field() const; \
  void SetVal_##field(const std::shared_ptr<Wrapper>& value);

class QORVIVIEWPLUGIN_API CRectangle {
  QORVI_RECORD_WRAPPER(Rectangle)
  QORVI_VALUE(float, fXTop)
  QORVI_VALUE(float, fYTop)
  QORVI_VALUE(float, fXBottom)
  QORVI_VALUE(float, fYBottom)
};

class QORVIVIEWPLUGIN_API CCalibrationInfo {
  QORVI_RECORD_WRAPPER(CalibrationInfo)
  QORVI_WRAPPED_VALUE(CRectangle, coordinate)
  QORVI_VALUE(ResourceStore::Stream::StreamType, stream_type)
};

class QORVIVIEWPLUGIN_API CFisheyeExpandWndParam {
  QORVI_RECORD_WRAPPER(FisheyeExpandWndParam)
  QORVI_VALUE(int, wnd_no)
  QORVI_VALUE(float, pos_x)
  QORVI_VALUE(float, pos_y)
  QORVI_VALUE(float, zoom)
};

class QORVIVIEWPLUGIN_API CFishEyeInfo {
  QORVI_RECORD_WRAPPER(FishEyeInfo)
  QORVI_VALUE(int, mount_type)
  QORVI_VALUE(int, expand_mode)
  QORVI_VALUE(int, window_index)
  QORVI_VALUE(std::vector<FisheyeExpandWndParam>, vc_wnd_param)
};

class QORVIVIEWPLUGIN_API CLocalWindowInfo {
  QORVI_RECORD_WRAPPER(LocalWindowInfo)
  QORVI_VALUE(int, ZoomWindowNo)
  QORVI_WRAPPED_VALUE(CRectangle, win_coordinate)
};

class QORVIVIEWPLUGIN_API CSingleWndCycle {
  QORVI_RECORD_WRAPPER(SingleWndCycle)
  QORVI_VALUE(SingleWndCycleType, type)
  QORVI_VALUE(int, cycle_time)
  QORVI_VALUE(std::string, cycle_name)
  QORVI_VALUE(std::vector<IdPair>, vc_id)
};

class QORVIVIEWPLUGIN_API CCameraGridStruct {
  QORVI_RECORD_WRAPPER(CameraGridStruct)
  QORVI_VALUE(unsigned int, idView)
  QORVI_VALUE(unsigned long long, uIndex)
  QORVI_VALUE(int, n_seq_index)
  QORVI_VALUE(unsigned int, camera_workstation_id)
  QORVI_VALUE(unsigned int, id_element_)
  QORVI_VALUE(ResourceType, enum_resource_type_)
  QORVI_VALUE(bool, bPTZConfigured)
  QORVI_WRAPPED_VALUE(CRectangle, struRect)
  QORVI_VALUE(unsigned long long, uPresetIndex)
  QORVI_VALUE(unsigned long long, uCruiseIndex)
  QORVI_VALUE(unsigned long long, uTrackIndex)
  QORVI_VALUE(unsigned int, idPOS)
  QORVI_VALUE(ResourceStore::Stream::StreamType, stream_type)
  QORVI_VALUE(std::string, map_center_x)
  QORVI_VALUE(std::string, map_center_y)
  QORVI_VALUE(int, map_scale_size)
  QORVI_VALUE(std::string, map_more_info)
  QORVI_VALUE(RelateResourceType, relate_type)
  QORVI_VALUE(unsigned int, relate_id)
  QORVI_VALUE(std::string, relate_name)
  QORVI_VALUE(MapLoadType, map_load_type)
  QORVI_VALUE(std::string, extend_resource)
  QORVI_VALUE(bool, enable_calibration)
  QORVI_WRAPPED_VALUE(CCalibrationInfo, calibration_info)
  QORVI_VALUE(ZoomMode, zoom_mode)
  // One new wrapper for each zoom window. Setting appends to the zoom windows that are there already.
  std::vector<std::shared_ptr<CLocalWindowInfo>> GetVal_local_wins() const;
  void SetVal_local_wins(const std::vector<std::shared_ptr<CLocalWindowInfo>>& value);
  QORVI_VALUE(std::string, relate_view_win_no)
  QORVI_VALUE(int, relate_draw_box_no)
  QORVI_VALUE(bool, b_enable_fish_eye)
  QORVI_WRAPPED_VALUE(CFishEyeInfo, fisheye_info)
  QORVI_WRAPPED_VALUE(CSingleWndCycle, single_cycle)
};

#undef QORVI_RECORD_WRAPPER
#undef QORVI_VALUE
#undef QORVI_WRAPPED_VALUE

struct CViewExportData;
struct CViewGroupExportData;

// A view as it was cached when the snapshot was made. Copies share the snapshot.
class QORVIVIEWPLUGIN_API CViewExport {
 public:
  CViewExport();
  explicit CViewExport(const CView& view);
  CViewExport(const CViewExport& other);
  CViewExport& operator=(const CViewExport& other);
  virtual ~CViewExport();

 private:
  std::shared_ptr<CViewExportData> m_data;
};

// A group as it was cached when the snapshot was made; its member views are those of the cache. Copies share the
// snapshot.
class QORVIVIEWPLUGIN_API CViewGroupExport {
 public:
  CViewGroupExport();
  explicit CViewGroupExport(const CViewGroup& group);
  CViewGroupExport(const CViewGroupExport& other);
  CViewGroupExport& operator=(const CViewGroupExport& other);
  virtual ~CViewGroupExport();

 private:
  std::shared_ptr<CViewGroupExportData> m_data;
};

// A snapshot of the cached view or group with that id, or empty. Any thread.
QORVIVIEWPLUGIN_API std::shared_ptr<CViewExport> FindViewByID(unsigned int id);
QORVIVIEWPLUGIN_API std::shared_ptr<CViewGroupExport> FindViewGroupByID(unsigned int id);

}  // namespace QorviViewPlugin
