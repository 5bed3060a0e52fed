// SPDX-License-Identifier: Apache-2.0
#include "SiteData.h"

#include <cstdint>
#include <cstdio>

#include "ResourceStore/Element.h"

namespace bench {

namespace {

using namespace QorviViewPlugin;

// Which window gets which extra; by hundredths.
enum : unsigned int {
  kFishEyeFrom = 10,
  kCycleFrom = 18,
  kMarkFrom = 26,
  kZoomFrom = 54,
  kDigitalZoomFrom = 76,
  kEnd = 86
};

uint32_t Mix(uint32_t a, uint32_t b) {
  uint32_t x = a * 2654435761U ^ (b + 0x9E3779B9U) * 2246822519U;
  x ^= x >> 15;
  x *= 2246822519U;
  return x ^ x >> 13;
}

// Exact in thousandths, in six decimals and as a float.
float Eighths(uint32_t random) {
  return static_cast<float>(random % 8) / 8.0f;
}

Rectangle Box(uint32_t random) {
  return {Eighths(random), Eighths(random >> 3), Eighths(random >> 6) + 0.5f, Eighths(random >> 9) + 0.5f};
}

ResourceType TypeOf(uint32_t random) {
  const uint32_t share = random % 100;
  if (share < 74) return ResourceTypeCamera;
  if (share < 82) return ResourceTypeDoor;
  if (share < 90) return ResourceTypeNone;
  if (share < 95) return ResourceTypeEmap;
  if (share < 97) return ResourceTypeWebPage;
  return share < 99 ? ResourceTypeRadar : ResourceTypeElevator;
}

void AddExtra(CameraGridStruct& window, uint32_t random, unsigned int kind) {
  if (window.enum_resource_type_ == ResourceTypeEmap) {
    window.map_center_x = std::to_string(random % 1800) + ".25";
    window.map_center_y = std::to_string(random % 900) + ".75";
    window.map_scale_size = static_cast<int>(random % 18);
    window.map_more_info = "layer " + std::to_string(random % 7);
  } else if (window.enum_resource_type_ == ResourceTypeWebPage) {
    window.extend_resource = "https://intranet.example/boards/" + std::to_string(random % 50);
  }
  if (window.enum_resource_type_ != ResourceTypeCamera) return;
  if (kind >= kFishEyeFrom && kind < kCycleFrom) {
    window.b_enable_fish_eye = true;
    window.fisheye_info = {1, 2, static_cast<int>(random % 4), {}};
    for (int n = 0; n < 5; ++n) {
      window.fisheye_info.vc_wnd_param.push_back({n, Eighths(random), Eighths(random >> 4), 1.5f});
    }
  } else if (kind >= kCycleFrom && kind < kMarkFrom) {
    window.single_cycle = {SingleWndCycleCameras, 15, "Round " + std::to_string(random % 30), {}};
    for (uint32_t n = 0; n < 8; ++n) window.single_cycle.vc_id.emplace_back(1, 1 + (random + n) % kElements);
  } else if (kind >= kMarkFrom && kind < kZoomFrom) {
    window.enable_calibration = true;
    window.calibration_info = {Box(random), static_cast<ResourceStore::Stream::StreamType>(1)};
  } else if (kind >= kZoomFrom && kind < kDigitalZoomFrom) {
    window.local_wins = {{1, Box(random)}, {2, Box(random >> 5)}, {3, Box(random >> 8)}, {4, Box(random >> 11)}};
    window.zoom_mode = static_cast<ZoomMode>(1);
    window.relate_view_win_no = "-1";
  }
}

bool HasDigitalZoom(const CameraGridStruct& window) {
  return window.enum_resource_type_ == ResourceTypeCamera && window.struRect.fXTop != -1.0f;
}

CameraGridStruct MakeWindow(unsigned int idView, unsigned int number) {
  const uint32_t random = Mix(idView, number);
  CameraGridStruct window;
  window.idView = idView;
  window.uIndex = number;
  window.n_seq_index = static_cast<int>(number);
  window.camera_workstation_id = 1 + random % 3;
  window.id_element_ = 1 + random % kElements;
  window.enum_resource_type_ = TypeOf(random >> 8);
  window.stream_type = static_cast<ResourceStore::Stream::StreamType>(random % 2);
  if (random % 9 == 0) {
    window.relate_type = RelateTypeDoor;
    window.relate_id = 1 + (random >> 4) % kElements;
    window.relate_name = "Tür " + std::to_string(random % 400);
  }
  if (random % 5 == 0) window.uPresetIndex = random % 16;
  const unsigned int kind = (random >> 16) % 100;
  AddExtra(window, random, kind);
  if (kind >= kDigitalZoomFrom && kind < kEnd && window.enum_resource_type_ == ResourceTypeCamera) {
    window.struRect = Box(random);
  }
  return window;
}

// --- Texts

void Add(std::string& out, const char* key, long long number) {
  out.append(out.back() == '{' ? "\"" : ",\"").append(key).append("\":").append(std::to_string(number));
}
void Add(std::string& out, const char* key, const std::string& text) {
  out.append(out.back() == '{' ? "\"" : ",\"").append(key).append("\":\"").append(text).append("\"");
}
void Open(std::string& out, const char* key, char bracket) {
  out.append(out.back() == '{' || out.back() == '[' ? "\"" : ",\"").append(key).append("\":") += bracket;
}
// The next element of a list.
void OpenElement(std::string& out) {
  out += out.back() == '[' ? "{" : ",{";
}

std::string Decimal(float value) {
  char text[64];
  std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
  return text;
}
long long Milli(float value) {
  return static_cast<long long>(value * 1000.0f);
}

void AddMilliCorners(std::string& out, const Rectangle& box) {
  Add(out, "TopX", Milli(box.fXTop));
  Add(out, "TopY", Milli(box.fYTop));
  Add(out, "BottomX", Milli(box.fXBottom));
  Add(out, "BottomY", Milli(box.fYBottom));
}

void AddCorners(std::string& out, const Rectangle& box) {
  Add(out, "Xtop", Decimal(box.fXTop));
  Add(out, "Ytop", Decimal(box.fYTop));
  Add(out, "Xbottom", Decimal(box.fXBottom));
  Add(out, "Ybottom", Decimal(box.fYBottom));
}

void AddFishEye(std::string& out, const FishEyeInfo& fisheye) {
  Open(out, "FishEye", '{');
  Add(out, "MountType", fisheye.mount_type);
  Add(out, "ExpandMode", fisheye.expand_mode);
  Add(out, "FishParentNo", fisheye.window_index);
  Open(out, "FishEyeInfo", '[');
  for (const FisheyeExpandWndParam& param : fisheye.vc_wnd_param) {
    OpenElement(out);
    Add(out, "No", param.wnd_no);
    Add(out, "PosX", Decimal(param.pos_x));
    Add(out, "PosY", Decimal(param.pos_y));
    Add(out, "Zoom", Decimal(param.zoom));
    out += '}';
  }
  out += "]}";
}

void AddCycle(std::string& out, const SingleWndCycle& cycle) {
  Open(out, "Cycle", '{');
  Add(out, "Type", cycle.type);
  Add(out, "CycleTime", cycle.cycle_time);
  Add(out, "CycleName", cycle.cycle_name);
  Open(out, "ID", '[');
  for (const auto& [site, resource] : cycle.vc_id) {
    OpenElement(out);
    Add(out, "SiteID", site);
    Add(out, "ResourceID", resource);
    out += '}';
  }
  out += "]}";
}

void AddEmap(std::string& out, const CameraGridStruct& window) {
  Open(out, "Emap", '{');
  Add(out, "LoadMode", window.map_load_type);
  Add(out, "PosX", window.map_center_x);
  Add(out, "PosY", window.map_center_y);
  Add(out, "ScaleSize", window.map_scale_size);
  Add(out, "ExtendInfo", window.map_more_info);
  out += '}';
}

void AddZoomWindows(std::string& out, const CameraGridStruct& window) {
  Open(out, "ZoomWindowList", '{');
  Add(out, "ZoomMode", window.zoom_mode);
  if (!window.local_wins.empty()) {
    Open(out, "ZoomWindow", '[');
    for (const LocalWindowInfo& zoom : window.local_wins) {
      OpenElement(out);
      Add(out, "No", zoom.ZoomWindowNo);
      AddMilliCorners(out, zoom.win_coordinate);
      out += '}';
    }
    out += ']';
  }
  out += '}';
}

// A server keeps the order and the digital zoom as texts, and may send the zoom a second time in another form.
enum class From { Client, Server };

void AddWindow(std::string& out, const CameraGridStruct& window, From from) {
  OpenElement(out);
  if (from == From::Server) {
    Add(out, "SequenceIndex", std::to_string(window.n_seq_index));
  } else {
    Add(out, "SequenceIndex", window.n_seq_index);
  }
  Add(out, "ResourceType", window.enum_resource_type_);
  Add(out, "SiteID", static_cast<int>(window.camera_workstation_id));
  Add(out, "ResourceID", static_cast<int>(window.id_element_));
  Add(out, "RelateResourceID", static_cast<int>(window.relate_id));
  Add(out, "RelateResourceName", window.relate_name);
  Add(out, "RelateResourceType", window.relate_type == RelateTypeDoor ? 1002 : window.relate_type);
  Add(out, "ExtendResource", window.extend_resource);
  Add(out, "WindowNo", static_cast<int>(window.uIndex));
  AddCorners(out, window.struRect);
  Add(out, "PresetPointIndex", static_cast<int>(window.uPresetIndex));
  Add(out, "CruiseIndex", static_cast<int>(window.uCruiseIndex));
  Add(out, "TrackIndex", static_cast<int>(window.uTrackIndex));
  Add(out, "StreamType", window.stream_type);
  if (window.b_enable_fish_eye) AddFishEye(out, window.fisheye_info);
  if (!window.single_cycle.vc_id.empty()) AddCycle(out, window.single_cycle);
  if (window.enum_resource_type_ == ResourceTypeEmap) AddEmap(out, window);
  if (window.enable_calibration) {
    Open(out, "CenterMark", '{');
    AddMilliCorners(out, window.calibration_info.coordinate);
    Add(out, "StreamType", window.calibration_info.stream_type);
    out += '}';
  }
  AddZoomWindows(out, window);
  Open(out, "RelatedZoomWindow", '{');
  Add(out, "ViewItemWindowNo", window.relate_view_win_no);
  Add(out, "ZoomWindowNo", window.relate_draw_box_no);
  out += '}';
  if (from == From::Server && HasDigitalZoom(window)) {
    std::string zoom = "{";
    AddCorners(zoom, window.struRect);
    std::string escaped;
    for (char c : zoom) escaped += c == '"' ? std::string("\\\"") : std::string(1, c);
    Add(out, "ExtendInfo", R"({\"playParams\":{\"DigitZoom\":)" + escaped + "}}}");
  }
  out += '}';
}

void AddPages(std::string& out, const ViewInfo& view, From from) {
  Open(out, "PlanPages", '[');
  for (const ViewPage& page : view.vcPages) {
    OpenElement(out);
    Add(out, "SpliteType", page.nSpliteType);
    Add(out, "CustomSplite", "");
    Open(out, "PlanViewItem", '[');
    for (const CameraGridStruct& window : page.vcWindows) AddWindow(out, window, from);
    out += "]}";
  }
  out += ']';
}

void AddServerView(std::string& out, const ViewInfo& view) {
  OpenElement(out);
  Add(out, "ID", view.idView);
  Add(out, "GUID", view.strGUID);
  Add(out, "Name", view.strName);
  Add(out, "ViewGroupID", static_cast<int>(view.idViewGroup));
  Add(out, "UserID", static_cast<int>(view.idUser));
  Add(out, "SequenceIndex", view.nSequenceIndex);
  Add(out, "AutoCycle", view.nAutoCycle);
  Add(out, "CycleTime", view.nCycleTime);
  Add(out, "ChangeNumber", std::to_string(view.nChangeNumber));
  AddPages(out, view, From::Server);
}

void AddGroup(std::string& out, unsigned int id) {
  OpenElement(out);
  Add(out, "ID", id);
  Add(out, "Name", "Floor " + std::to_string(id));
  Add(out, "ParentViewGroupID", -1);
  Add(out, "UserID", -1);
  Add(out, "IsSharedView", -1);
  Add(out, "SequenceIndex", id);
  Add(out, "ChangeNumber", std::to_string(id));
  out += '}';
}

constexpr char kEnvelope[] = R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":)";
constexpr size_t kBytesOfWindow = 720;

std::string ListHead(const SiteSize& size) {
  return std::string(kEnvelope) + R"({"ChangeNumber":")" + std::to_string(size.Groups() + size.views) + R"(",)";
}

}  // namespace

ViewInfo MakeView(const SiteSize& size, unsigned int id) {
  const uint32_t random = Mix(id, 0);
  char guid[40];
  std::snprintf(guid, sizeof guid, "%08x-0000-4000-8000-%012x", random, id);
  ViewInfo view;
  view.idView = id;
  view.strGUID = guid;
  view.strName = (random % 3 == 0 ? "Entrée " : "Corridor ") + std::to_string(random % size.views);
  view.idViewGroup = 1 + (id - 1) / size.viewsOfGroup;
  view.nSequenceIndex = id;
  view.nAutoCycle = 1;
  view.nCycleTime = 20;
  view.nChangeNumber = size.Groups() + id;
  view.vcPages.resize(size.pages);
  unsigned int number = 0;
  for (ViewPage& page : view.vcPages) {
    page.nSpliteType = static_cast<int>(size.windows);
    page.vcWindows.reserve(size.windows);
    for (unsigned int w = 0; w < size.windows; ++w) page.vcWindows.push_back(MakeWindow(id, ++number));
  }
  return view;
}

std::string ViewListText(const SiteSize& size) {
  std::string text;
  text.reserve(size.Windows() * kBytesOfWindow + size.views * 400ull);
  text = ListHead(size) + R"("ViewList":{"View":[)";
  for (unsigned int id = 1; id <= size.views; ++id) {
    AddServerView(text, MakeView(size, id));
    text += '}';
  }
  text += "]}}}}";
  text.shrink_to_fit();
  return text;
}

std::string GroupListText(const SiteSize& size) {
  std::string text = ListHead(size) + R"("ViewGroupList":{"ViewGroup":[)";
  for (unsigned int id = 1; id <= size.Groups(); ++id) AddGroup(text, id);
  return text + "]}}}}";
}

std::string ChangeText(const SiteSize& size, unsigned int first, unsigned int last, int method, ChangeNumber number) {
  std::string text = std::string(kEnvelope) + R"({"ViewList":{"View":[)";
  for (unsigned int id = first; id <= last; ++id) {
    ViewInfo view = MakeView(size, id);
    view.nChangeNumber = number;
    AddServerView(text, view);
    Add(text, "Method", method);
    text += '}';
  }
  return text + "]}}}}";
}

std::string ViewBodyText(const ViewInfo& view) {
  std::string text = R"({"View":{)";
  Add(text, "ID", static_cast<int>(view.idView));
  Add(text, "Name", view.strName);
  Add(text, "ViewGroupID", static_cast<int>(view.idViewGroup));
  Add(text, "UserID", static_cast<int>(view.idUser));
  Add(text, "SequenceIndex", view.nSequenceIndex);
  Add(text, "AutoCycle", view.nAutoCycle);
  Add(text, "CycleTime", view.nCycleTime);
  AddPages(text, view, From::Client);
  return text + "}}";
}

std::string SeedText(const SiteSize& size) {
  std::string text = R"({"Users":[{"ID":1,"Name":"bench","Password":"bench"}],"ViewGroups":[)";
  for (unsigned int id = 1; id <= size.Groups(); ++id) AddGroup(text, id);
  text += R"(],"Views":[)";
  for (unsigned int id = 1; id <= size.views; ++id) {
    AddServerView(text, MakeView(size, id));
    text += '}';
  }
  return text + "]}";
}

std::string ElementName(unsigned int id) {
  return "Camera " + std::to_string(id) + (id % 4 == 0 ? ", östlich" : ", level 2");
}

void KnowElements() {
  std::vector<std::shared_ptr<ResourceStore::CElement>> elements;
  for (int type : {1001, 1002, 1005, 1006}) {
    for (unsigned int id = 1; id <= kElements; ++id) {
      elements.push_back(std::make_shared<ResourceStore::CElement>(id, type, ElementName(id), 1));
    }
  }
  ResourceStore::CElementManager::Instance().PutElements(elements);
}

}  // namespace bench
