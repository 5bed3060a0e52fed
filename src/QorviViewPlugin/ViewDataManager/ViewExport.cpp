// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"

#include "QorviViewPlugin/ViewDataManager/View.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"

namespace QorviViewPlugin {

#define QORVI_RECORD_WRAPPER(Record)                                                       \
  C##Record::C##Record() : m_data(std::make_shared<Record>()) {}                           \
  C##Record::C##Record(const Record& record) : m_data(std::make_shared<Record>(record)) {} \
  C##Record::C##Record(std::shared_ptr<Record> data) : m_data(std::move(data)) {}          \
  C##Record::C##Record(const C##Record& other) = default;                                  \
  C##Record& C##Record::operator=(const C##Record& other) = default;                       \
  C##Record::~C##Record() = default;                                                       \
  std::shared_ptr<Record> C##Record::GetDataPtr() const {                                  \
    return m_data;                                                                         \
  }

#define QORVI_VALUE(Class, Type, field)           \
  Type Class::GetVal_##field() const {            \
    return m_data->field;                         \
  }                                               \
  void Class::SetVal_##field(const Type& value) { \
    m_data->field = value;                        \
  }

#define QORVI_WRAPPED_VALUE(Class, Wrapper, field)                    \
  std::shared_ptr<Wrapper> Class::GetVal_##field() const {            \
    return std::make_shared<Wrapper>(m_data->field);                  \
  }                                                                   \
  void Class::SetVal_##field(const std::shared_ptr<Wrapper>& value) { \
    m_data->field = *value->GetDataPtr();                             \
  }

QORVI_RECORD_WRAPPER(Rectangle)
QORVI_VALUE(CRectangle, float, fXTop)
QORVI_VALUE(CRectangle, float, fYTop)
QORVI_VALUE(CRectangle, float, fXBottom)
QORVI_VALUE(CRectangle, float, fYBottom)

QORVI_RECORD_WRAPPER(CalibrationInfo)
QORVI_WRAPPED_VALUE(CCalibrationInfo, CRectangle, coordinate)
QORVI_VALUE(CCalibrationInfo, ResourceStore::Stream::StreamType, stream_type)

QORVI_RECORD_WRAPPER(FisheyeExpandWndParam)
QORVI_VALUE(CFisheyeExpandWndParam, int, wnd_no)
QORVI_VALUE(CFisheyeExpandWndParam, float, pos_x)
QORVI_VALUE(CFisheyeExpandWndParam, float, pos_y)
QORVI_VALUE(CFisheyeExpandWndParam, float, zoom)

QORVI_RECORD_WRAPPER(FishEyeInfo)
QORVI_VALUE(CFishEyeInfo, int, mount_type)
QORVI_VALUE(CFishEyeInfo, int, expand_mode)
QORVI_VALUE(CFishEyeInfo, int, window_index)
QORVI_VALUE(CFishEyeInfo, std::vector<FisheyeExpandWndParam>, vc_wnd_param)

QORVI_RECORD_WRAPPER(LocalWindowInfo)
QORVI_VALUE(CLocalWindowInfo, int, ZoomWindowNo)
QORVI_WRAPPED_VALUE(CLocalWindowInfo, CRectangle, win_coordinate)

QORVI_RECORD_WRAPPER(SingleWndCycle)
QORVI_VALUE(CSingleWndCycle, SingleWndCycleType, type)
QORVI_VALUE(CSingleWndCycle, int, cycle_time)
QORVI_VALUE(CSingleWndCycle, std::string, cycle_name)
QORVI_VALUE(CSingleWndCycle, CSingleWndCycle::IdPairs, vc_id)

QORVI_RECORD_WRAPPER(CameraGridStruct)
QORVI_VALUE(CCameraGridStruct, unsigned int, idView)
QORVI_VALUE(CCameraGridStruct, unsigned long long, uIndex)
QORVI_VALUE(CCameraGridStruct, int, n_seq_index)
QORVI_VALUE(CCameraGridStruct, unsigned int, camera_workstation_id)
QORVI_VALUE(CCameraGridStruct, unsigned int, id_element_)
QORVI_VALUE(CCameraGridStruct, ResourceType, enum_resource_type_)
QORVI_VALUE(CCameraGridStruct, bool, bPTZConfigured)
QORVI_WRAPPED_VALUE(CCameraGridStruct, CRectangle, struRect)
QORVI_VALUE(CCameraGridStruct, unsigned long long, uPresetIndex)
QORVI_VALUE(CCameraGridStruct, unsigned long long, uCruiseIndex)
QORVI_VALUE(CCameraGridStruct, unsigned long long, uTrackIndex)
QORVI_VALUE(CCameraGridStruct, unsigned int, idPOS)
QORVI_VALUE(CCameraGridStruct, ResourceStore::Stream::StreamType, stream_type)
QORVI_VALUE(CCameraGridStruct, std::string, map_center_x)
QORVI_VALUE(CCameraGridStruct, std::string, map_center_y)
QORVI_VALUE(CCameraGridStruct, int, map_scale_size)
QORVI_VALUE(CCameraGridStruct, std::string, map_more_info)
QORVI_VALUE(CCameraGridStruct, RelateResourceType, relate_type)
QORVI_VALUE(CCameraGridStruct, unsigned int, relate_id)
QORVI_VALUE(CCameraGridStruct, std::string, relate_name)
QORVI_VALUE(CCameraGridStruct, MapLoadType, map_load_type)
QORVI_VALUE(CCameraGridStruct, std::string, extend_resource)
QORVI_VALUE(CCameraGridStruct, bool, enable_calibration)
QORVI_WRAPPED_VALUE(CCameraGridStruct, CCalibrationInfo, calibration_info)
QORVI_VALUE(CCameraGridStruct, ZoomMode, zoom_mode)
QORVI_VALUE(CCameraGridStruct, std::string, relate_view_win_no)
QORVI_VALUE(CCameraGridStruct, int, relate_draw_box_no)
QORVI_VALUE(CCameraGridStruct, bool, b_enable_fish_eye)
QORVI_WRAPPED_VALUE(CCameraGridStruct, CFishEyeInfo, fisheye_info)
QORVI_WRAPPED_VALUE(CCameraGridStruct, CSingleWndCycle, single_cycle)

std::vector<std::shared_ptr<CLocalWindowInfo>> CCameraGridStruct::GetVal_local_wins() const {
  std::vector<std::shared_ptr<CLocalWindowInfo>> windows;
  windows.reserve(m_data->local_wins.size());
  for (const LocalWindowInfo& window : m_data->local_wins) {
    windows.push_back(std::make_shared<CLocalWindowInfo>(window));
  }
  return windows;
}

void CCameraGridStruct::SetVal_local_wins(const std::vector<std::shared_ptr<CLocalWindowInfo>>& value) {
  for (const std::shared_ptr<CLocalWindowInfo>& window : value) m_data->local_wins.push_back(*window->GetDataPtr());
}

struct CViewExportData {
  std::shared_ptr<CView> view;
};

struct CViewGroupExportData {
  std::shared_ptr<CViewGroup> group;
};

CViewExport::CViewExport() : m_data(std::make_shared<CViewExportData>(CViewExportData{std::make_shared<CView>()})) {}
CViewExport::CViewExport(const CView& view)
    : m_data(std::make_shared<CViewExportData>(CViewExportData{std::make_shared<CView>(view)})) {}
CViewExport::CViewExport(const CViewExport& other) = default;
CViewExport& CViewExport::operator=(const CViewExport& other) = default;
CViewExport::~CViewExport() = default;

CViewGroupExport::CViewGroupExport()
    : m_data(std::make_shared<CViewGroupExportData>(CViewGroupExportData{std::make_shared<CViewGroup>()})) {}
CViewGroupExport::CViewGroupExport(const CViewGroup& group)
    : m_data(std::make_shared<CViewGroupExportData>(CViewGroupExportData{std::make_shared<CViewGroup>(group)})) {}
CViewGroupExport::CViewGroupExport(const CViewGroupExport& other) = default;
CViewGroupExport& CViewGroupExport::operator=(const CViewGroupExport& other) = default;
CViewGroupExport::~CViewGroupExport() = default;

std::shared_ptr<CViewExport> FindViewByID(unsigned int id) {
  const auto view = Manager().GetViewByID(id);
  return view ? std::make_shared<CViewExport>(*view) : nullptr;
}

std::shared_ptr<CViewGroupExport> FindViewGroupByID(unsigned int id) {
  const auto group = Manager().GetViewGroupByID(id);
  return group ? std::make_shared<CViewGroupExport>(*group) : nullptr;
}

}  // namespace QorviViewPlugin
