// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"

#include "QorviViewPlugin/ViewDataManager/View.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"

namespace QorviViewPlugin {

namespace {

// In what form a wrapper hands a field of that type out and in: as it stands.
template <class Type>
struct Handed {
  using Value = Type;
  static Value Get(const Type& field) { return field; }
  static void Set(Type& field, const Value& value) { field = value; }
};

// A record in a wrapper of its own.
template <class Record, class Wrapper>
struct HandedWrapped {
  using Value = std::shared_ptr<Wrapper>;
  static Value Get(const Record& field) { return std::make_shared<Wrapper>(field); }
  static void Set(Record& field, const Value& value) { field = *value->GetDataPtr(); }
};
template <>
struct Handed<Rectangle> : HandedWrapped<Rectangle, CRectangle> {};
template <>
struct Handed<CalibrationInfo> : HandedWrapped<CalibrationInfo, CCalibrationInfo> {};
template <>
struct Handed<FishEyeInfo> : HandedWrapped<FishEyeInfo, CFishEyeInfo> {};
template <>
struct Handed<SingleWndCycle> : HandedWrapped<SingleWndCycle, CSingleWndCycle> {};

// Zoom windows in one wrapper each; those handed in are added.
template <>
struct Handed<std::vector<LocalWindowInfo>> {
  using Value = std::vector<std::shared_ptr<CLocalWindowInfo>>;
  static Value Get(const std::vector<LocalWindowInfo>& field) {
    Value windows;
    windows.reserve(field.size());
    for (const LocalWindowInfo& window : field) windows.push_back(std::make_shared<CLocalWindowInfo>(window));
    return windows;
  }
  static void Set(std::vector<LocalWindowInfo>& field, const Value& value) {
    for (const auto& window : value) field.push_back(*window->GetDataPtr());
  }
};

}  // namespace

#define QORVI_WRAPPER_ITSELF(Record)                                                       \
  C##Record::C##Record() : m_data(std::make_shared<Record>()) {}                           \
  C##Record::C##Record(const Record& record) : m_data(std::make_shared<Record>(record)) {} \
  C##Record::C##Record(std::shared_ptr<Record> data) : m_data(std::move(data)) {}          \
  C##Record::C##Record(const C##Record& other) = default;                                  \
  C##Record& C##Record::operator=(const C##Record& other) = default;                       \
  C##Record::~C##Record() = default;                                                       \
  std::shared_ptr<Record> C##Record::GetDataPtr() const {                                  \
    return m_data;                                                                         \
  }

// Of the class that QORVI_WRAPPER names.
#define QORVI_WRAPPER_FIELD(type, name, ...)                            \
  Handed<type>::Value QORVI_WRAPPER::GetVal_##name() const {            \
    return Handed<type>::Get(m_data->name);                             \
  }                                                                     \
  void QORVI_WRAPPER::SetVal_##name(const Handed<type>::Value& value) { \
    Handed<type>::Set(m_data->name, value);                             \
  }

#define QORVI_WRAPPER CRectangle
QORVI_WRAPPER_ITSELF(Rectangle)
QORVI_MODEL_RECTANGLE(QORVI_WRAPPER_FIELD)
#undef QORVI_WRAPPER

#define QORVI_WRAPPER CCalibrationInfo
QORVI_WRAPPER_ITSELF(CalibrationInfo)
QORVI_MODEL_CALIBRATION_INFO(QORVI_WRAPPER_FIELD)
#undef QORVI_WRAPPER

#define QORVI_WRAPPER CFisheyeExpandWndParam
QORVI_WRAPPER_ITSELF(FisheyeExpandWndParam)
QORVI_MODEL_FISHEYE_EXPAND_WND_PARAM(QORVI_WRAPPER_FIELD)
#undef QORVI_WRAPPER

#define QORVI_WRAPPER CFishEyeInfo
QORVI_WRAPPER_ITSELF(FishEyeInfo)
QORVI_MODEL_FISH_EYE_INFO(QORVI_WRAPPER_FIELD)
#undef QORVI_WRAPPER

#define QORVI_WRAPPER CLocalWindowInfo
QORVI_WRAPPER_ITSELF(LocalWindowInfo)
QORVI_MODEL_LOCAL_WINDOW_INFO(QORVI_WRAPPER_FIELD)
#undef QORVI_WRAPPER

#define QORVI_WRAPPER CSingleWndCycle
QORVI_WRAPPER_ITSELF(SingleWndCycle)
QORVI_MODEL_SINGLE_WND_CYCLE(QORVI_WRAPPER_FIELD)
#undef QORVI_WRAPPER

#define QORVI_WRAPPER CCameraGridStruct
QORVI_WRAPPER_ITSELF(CameraGridStruct)
QORVI_MODEL_CAMERA_GRID_STRUCT(QORVI_WRAPPER_FIELD)
#undef QORVI_WRAPPER

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
