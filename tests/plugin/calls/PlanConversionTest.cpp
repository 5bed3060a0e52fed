// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/PlanConversion.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace call_test {
namespace {

using namespace QorviViewPlugin;
namespace protocol = QorviViewPlugin_view_plugin_protocol;

template <class Record>
Record Read(const std::string& text) {
  Record data;
  QorviVideoComm::AdapterOf<Record> record(&data);
  EXPECT_TRUE(QorviVideoComm::ParseJsonRequest(record, text)) << text;
  return data;
}

std::string Written(protocol::PlanItem item) {
  protocol::PlanItemJSONStruct record(&item);
  return QorviVideoComm::SerializeJsonResponse(record);
}

TEST(PlanConversionTest, KindsOfContentDifferOnlyForTheEmptyWindow) {
  for (const int type : {1001, 1002, 1005, 1006, 1012, 1027, 2004, 5001, 7001, 25001, 29000}) {
    EXPECT_EQ(PlanItemTypeToResourceType(type), type);
    EXPECT_EQ(ResourceTypeToPlanItemType(ResourceType{type}), type);
  }
  EXPECT_EQ(PlanItemTypeToResourceType(0), 100);
  EXPECT_EQ(ResourceTypeToPlanItemType(ResourceType{100}), 0);
  for (const int type : {-1, 1, 42, 100, 1000, 1003, 7000, 29001}) {
    EXPECT_EQ(PlanItemTypeToResourceType(type), -1) << type;
  }
  for (const int type : {-1, 0, 1, 42, 1003, 7000, 29001}) {
    EXPECT_EQ(ResourceTypeToPlanItemType(ResourceType{type}), 0) << type;
  }
}

constexpr char kFullItem[] =
    R"({"Sequence":3,"ResourceType":7001,"ResourceID":"11","SiteID":"12","ResourceName":"map",)"
    R"("OnlineStatus":5,"ResourceCapability":"c","StreamType":2,"ConnectType":6,"CameraType":7,"PresetId":13,)"
    R"("PresetName":"preset","IsDelete":true,"PermissionItem":"p","RelateResourceType":4,"RelateResourceID":14,)"
    R"("RelateResourceName":"door","ExtendResource":"extend","DeviceID":8,"WindowNo":15,"Xtop":"0.125","Ytop":"0.25",)"
    R"("Xbottom":"0.5","Ybottom":"1","PresetPointIndex":9,"CruiseIndex":16,"TrackIndex":17,)"
    R"("FishEye":{"is_fisheye_open":true,"mount_type":1,"expand_mode":2,"window_no":4,)"
    R"("FisheyeWndParam":[{"WndNo":1,"PosX":"1.5","PosY":"-2","Zoom":"3e1"},{"WndNo":2}]},)"
    R"("Emap":{"LoadMode":2,"PosX":"x","PosY":"y","ScaleSize":18,"ExtendInfo":"more"},)"
    R"("CenterMark":{"TopX":250,"TopY":500,"BottomX":750,"BottomY":1000,"StreamType":1},)"
    R"("ZoomWindowList":{"ZoomMode":1,"ZoomWindow":[{"No":1,"TopX":100,"TopY":200,"BottomX":300,"BottomY":-400}]},)"
    R"("RelatedZoomWindow":{"ViewItemWindowNo":"2","ZoomWindowNo":19},)"
    R"("CycleInfo":{"cycle_type":2,"cycle_time":20,"CycleName":"round","CycleResourceID":[)"
    R"({"SiteID":"21","ResourceID":"4294967295","ResourceName":"dropped"},{"SiteID":"x"}]}})";

TEST(PlanConversionTest, AWindowComesBackAsTheModelHoldsIt) {
  EXPECT_EQ(Written(ToPlanItem(ToWindow(Read<protocol::PlanItem>(kFullItem)))),
            // Names, capabilities and the numbers that the model has no place for are gone; the window number is the
            // sequence.
            R"({"Sequence":3,"ResourceType":7001,"ResourceID":"11","SiteID":"12","ResourceName":"",)"
            R"("OnlineStatus":1,"ResourceCapability":"","StreamType":2,"ConnectType":0,"CameraType":0,"PresetId":13,)"
            R"("PresetName":"","IsDelete":false,"PermissionItem":"","RelateResourceType":4,"RelateResourceID":14,)"
            R"("RelateResourceName":"door","ExtendResource":"extend","DeviceID":0,"WindowNo":3,"Xtop":"0.125000",)"
            R"("Ytop":"0.250000","Xbottom":"0.500000","Ybottom":"1.000000","PresetPointIndex":0,"CruiseIndex":16,)"
            R"("TrackIndex":17,"FishEye":{"is_fisheye_open":true,"mount_type":1,"expand_mode":2,"window_no":4,)"
            R"("FisheyeWndParam":[{"WndNo":1,"PosX":"1.500000","PosY":"-2.000000","Zoom":"30.000000"},)"
            R"({"WndNo":2,"PosX":"0.000000","PosY":"0.000000","Zoom":"0.000000"}]},)"
            R"("Emap":{"LoadMode":2,"PosX":"x","PosY":"y","ScaleSize":18,"ExtendInfo":"more"},)"
            R"("CenterMark":{"TopX":250,"TopY":500,"BottomX":750,"BottomY":1000,"StreamType":1},)"
            R"("ZoomWindowList":{"ZoomMode":1,"ZoomWindow":)"
            R"([{"No":1,"TopX":100,"TopY":200,"BottomX":300,"BottomY":-400}]},)"
            R"("RelatedZoomWindow":{"ViewItemWindowNo":"2","ZoomWindowNo":19},)"
            R"("CycleInfo":{"cycle_type":2,"cycle_time":20,"CycleName":"round","CycleResourceID":[)"
            R"({"SiteID":"21","ResourceID":"4294967295","ResourceName":""},)"
            R"({"SiteID":"0","ResourceID":"0","ResourceName":""}]}})");
}

TEST(PlanConversionTest, TheModelGetsWhatTheHostCannotSee) {
  const CameraGridStruct window = ToWindow(Read<protocol::PlanItem>(kFullItem));
  EXPECT_EQ(std::tuple(window.idView, window.uIndex, window.idPOS), std::tuple(kNoId, 3u, 15u));
  EXPECT_TRUE(window.bPTZConfigured && window.enable_calibration);
}

TEST(PlanConversionTest, ACameraWindowCarriesItsPresetsNameAsItsExtendText) {
  const char* const kTexts = R"(,"PresetName":"preset","ExtendResource":"extend"})";
  const auto backAndForth = [&](const std::string& type) {
    return ToPlanItem(ToWindow(Read<protocol::PlanItem>(R"({"ResourceType":)" + type + kTexts)));
  };
  EXPECT_EQ(backAndForth("1001").PresetName, "preset");
  EXPECT_EQ(backAndForth("1001").ExtendResource, "preset");
  for (const char* type : {"0", "1002", "25001", "42"}) {
    EXPECT_EQ(backAndForth(type).PresetName, "");
    EXPECT_EQ(backAndForth(type).ExtendResource, "extend");
  }
}

TEST(PlanConversionTest, NumbersComeBackWithTheirSignAndUnreadableOnesAsZero) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"Sequence":-2,"WindowNo":-6})", R"("WindowNo":-2,)"},
      {R"({"PresetId":-3})", R"("PresetId":-3,)"},
      {R"({"ZoomWindowList":{"ZoomMode":-2}})", R"("ZoomWindowList":{"ZoomMode":-2,"ZoomWindow":[]})"},
      {R"({"CruiseIndex":-4,"TrackIndex":-5})", R"("CruiseIndex":-4,"TrackIndex":-5,)"},
      {R"({"SiteID":"-1","ResourceID":"-7"})", R"("ResourceID":"-7","SiteID":"-1",)"},
      {R"({"SiteID":"","ResourceID":"abc"})", R"("ResourceID":"0","SiteID":"0",)"},
      {R"({"Xtop":"","Ytop":"x","Xbottom":" .5y"})",
       R"("Xtop":"0.000000","Ytop":"0.000000","Xbottom":"0.500000","Ybottom":"-1.000000",)"},
  };
  for (const auto& [read, expected] : cases) {
    const std::string written = Written(ToPlanItem(ToWindow(Read<protocol::PlanItem>(read))));
    EXPECT_NE(written.find(expected), std::string::npos) << read << written;
  }
}

TEST(PlanConversionTest, SomeFieldsAreShownOnlyInTheirContext) {
  const float infinity = std::numeric_limits<float>::infinity();
  const auto relatedWithZooms = [](const char* window) {
    return [window](CameraGridStruct& w) {
      w.relate_view_win_no = window;
      w.n_seq_index = 5;
      w.local_wins.resize(1);
    };
  };
  // A change to a new window of the model, and a part of the written item.
  const std::pair<std::function<void(CameraGridStruct&)>, std::string> cases[] = {
      {[](auto&) {}, R"({"Sequence":-1,"ResourceType":1001,"ResourceID":"-1",)"},
      {[](auto&) {}, R"("WindowNo":0,"Xtop":"-1.000000",)"},
      {[](auto&) {}, R"("CenterMark":{"TopX":-1000,)"},
      {[](auto& w) { w.stream_type = ResourceStore::Stream::StreamType{100}; }, R"("StreamType":-1,"Con)"},
      {[](auto& w) { w.stream_type = ResourceStore::Stream::StreamType{101}; }, R"("StreamType":101,"Con)"},
      {[](auto& w) {
         w.fisheye_info = {1, 2, 3, {{4, 1.0f, 1.0f, 1.0f}}};
       },
       R"("FishEye":{"is_fisheye_open":false,"mount_type":0,"expand_mode":0,"window_no":0,"FisheyeWndParam":[]})"},
      {[](auto& w) {
         w.single_cycle = {SingleWndCycleAreas, 5, "through nothing", {}};
       },
       R"("CycleInfo":{"cycle_type":0,"cycle_time":0,"CycleName":"","CycleResourceID":[]})"},
      {[=](auto& w) {
         w.local_wins = {{5, {0.1234f, -0.0009f, infinity, -infinity}}};
       },
       R"("ZoomWindow":[{"No":5,"TopX":123,"TopY":0,"BottomX":2147483647,"BottomY":-2147483648}])"},
      {[](auto& w) { w.relate_view_win_no = "-1"; }, R"("ViewItemWindowNo":"-1")"},
      {relatedWithZooms("-1"), R"("ViewItemWindowNo":"5")"},
      {relatedWithZooms(" -1"), R"("ViewItemWindowNo":" -1")"},
  };
  for (const auto& [change, expected] : cases) {
    CameraGridStruct window;
    change(window);
    const std::string written = Written(ToPlanItem(window));
    EXPECT_NE(written.find(expected), std::string::npos) << expected << written;
  }
}

}  // namespace
}  // namespace call_test
