// SPDX-License-Identifier: Apache-2.0
// The server's form of views and groups: what is written, byte for byte, and what either reader makes of every key.
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"

#include <gtest/gtest.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <functional>
#include <utility>

#include "../../Cases.h"
#include "ModelText.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"

namespace QorviViewPlugin {
namespace {

using core_test::Difference;

ViewInfo ReadViewText(const std::string& text, DocumentOrigin origin) {
  NetLink::CRapidJsonProto document;
  EXPECT_TRUE(document.set_str(text)) << text;
  PathCursor at(document);
  return ReadView(at, origin);
}

ViewGroupInfo ReadGroupText(const std::string& text, DocumentOrigin origin) {
  NetLink::CRapidJsonProto document;
  EXPECT_TRUE(document.set_str(text)) << text;
  PathCursor at(document);
  return ReadViewGroup(at, origin);
}

CameraGridStruct ReadWindowText(const std::string& window, DocumentOrigin origin) {
  const ViewInfo view = ReadViewText(R"({"ID":9,"PlanPages":[{"PlanViewItem":[)" + window + "]}]}", origin);
  return view.vcPages.at(0).vcWindows.at(0);
}

// The members of a view and of a window as they are written.
const auto kWritten = testing_support::Cases(READ_TEXTS, "HoldsEveryGroupInTheServersOrder");
const std::string kView = kWritten.at(0).text, kWindow = kWritten.at(1).text;

// A view with that window, and what does not travel with it.
ViewInfo ViewWithEverything() {
  ViewInfo view = ReadViewText("{" + kView + R"("PlanPages":[{"SpliteType":4,"CustomSplite":"MXgy","PlanViewItem":[{)" +
                                   kWindow + R"(}]},{"SpliteType":1}],"Method":1,"GUID":"g"})",
                               DocumentOrigin::ListReply);
  CameraGridStruct& window = view.vcPages[0].vcWindows[0];
  // Of e-maps zoom windows are not read; of numbers the high half, and what is beyond thousandths, are not written.
  window.zoom_mode = static_cast<ZoomMode>(2);
  window.local_wins = {{1, {0.25f, 0.5f, 0.75f, 1.0f}}, {2, {}}};
  window.uPresetIndex = 0x1'0000'0007ull;
  window.calibration_info.coordinate.fXTop = 0.1234f;
  return view;
}

TEST(AWrittenView, HoldsEveryGroupInTheServersOrder) {
  ViewInfo view = ViewWithEverything();
  EXPECT_EQ(Difference(ViewInfo(), view), kWritten[0].expected.at(0));
  EXPECT_EQ(Difference(CameraGridStruct(), view.vcPages[0].vcWindows[0]), kWritten[1].expected.at(0));
  view.bShared = true;
  EXPECT_EQ(WriteViewDocument(view),
            R"({"View":{)" + kView + R"("SharedUserID":1,"PlanPages":[{"SpliteType":4,"CustomSplite":"MXgy",)" +
                R"("PlanViewItem":[{)" + kWindow + R"(}]},{"SpliteType":1,"CustomSplite":""}]}})");
}

TEST(AWrittenView, LeavesOutWhatANewWindowDoesNotHave) {
  ViewInfo view;
  view.vcPages = {{"", 0, {CameraGridStruct()}}};
  CameraGridStruct& window = view.vcPages[0].vcWindows[0];
  window.single_cycle = {SingleWndCycleAreas, 20, "a cycle through nothing", {}};
  window.map_center_x = "not an e-map";
  window.zoom_mode = ZoomMode{3};  // written without zoom windows, too
  EXPECT_EQ(WriteViewDocument(view), testing_support::Cases(READ_TEXTS).at(0).text);
}

TEST(AWrittenView, EscapesTextsAsRapidJsonDoes) {
  ViewInfo view;
  for (int c = 0; c < 256; ++c) view.strName += static_cast<char>(c);
  rapidjson::StringBuffer expected;
  rapidjson::Writer<rapidjson::StringBuffer> writer(expected);
  writer.String(view.strName.data(), static_cast<rapidjson::SizeType>(view.strName.size()));
  EXPECT_NE(WriteViewDocument(view).find("\"Name\":" + std::string(expected.GetString()) + ",\"ViewGroupID\""),
            std::string::npos);
}

TEST(AWrittenView, SendsBothKindsOfNoGroupAsMinusOne) {
  for (unsigned int group : {0u, kNoId}) {
    ViewInfo view;
    view.idViewGroup = group;
    EXPECT_NE(WriteViewDocument(view).find(R"("ViewGroupID":-1,)"), std::string::npos);
  }
}

TEST(AWrittenView, ConvertsTheKindOfTheRelatedResource) {
  const std::pair<int, int> rows[] = {{0, 1001}, {1, 7001}, {4, 1002}, {5, 2004},
                                      {8, 1027}, {-1, -1},  {2, 2},    {1005, 1005}};
  CViewGroupManager& manager = Vant::Base::CSingleton<CViewGroupManager>::Instance();
  for (const auto& [model, server] : rows) {
    EXPECT_EQ(manager.RelateTypeToServer(static_cast<RelateResourceType>(model)), server);
    EXPECT_EQ(manager.ServerToRelateType(server), model);
  }
}

TEST(AWrittenGroup, SaysMinusOneWhenItIsNotShared) {
  ViewGroupInfo group{3, 8, kNoId, "Doors", ViewTypePrivate, 0x2'0000'0001, ChangeModified, false};
  EXPECT_EQ(WriteViewGroupDocument(group),
            R"({"ViewGroup":{"ID":3,"Name":"Doors","ParentViewGroupID":-1,"UserID":8,"IsSharedView":-1,)"
            R"("SequenceIndex":1}})");
  group.bShared = true;
  EXPECT_NE(WriteViewGroupDocument(group).find(R"("IsSharedView":1,)"), std::string::npos);
}

// --- Readers

// The running test's cases in READ_TEXTS; `told` reads one.
void ExpectCases(const std::function<std::string(const std::string& text, DocumentOrigin origin)>& told) {
  for (const auto& [text, expected] : testing_support::Cases(READ_TEXTS)) {
    EXPECT_EQ(told(text, DocumentOrigin::ListReply), expected.front()) << text << " listed";
    EXPECT_EQ(told(text, DocumentOrigin::Download), expected.back()) << text << " downloaded";
  }
}

TEST(AReadWindow, WithoutKeysDiffersFromANewOne) {
  for (DocumentOrigin origin : {DocumentOrigin::ListReply, DocumentOrigin::Download}) {
    EXPECT_EQ(
        Difference(CameraGridStruct(), ReadWindowText("{}", origin)),
        "idView=9 uIndex=18446744073709551615 n_seq_index=0 enum_resource_type_=-1 struRect=(0,0,0,0) stream_type=-1");
  }
}

// What the writer writes is read back in a test of its own; here is what it never writes.
TEST(AReadWindow, TakesEachKeyByItsOwnRule) {
  ExpectCases([](const std::string& window, DocumentOrigin origin) {
    return Difference(ReadWindowText("{}", origin), ReadWindowText(window, origin));
  });
}

TEST(ExtendInfo, HoldsADigitalZoomElseAFisheyeElseAnEmapPosition) {
  ExpectCases([](const std::string& text, DocumentOrigin) {
    CameraGridStruct window;
    ReadExtendInfo(text, window);
    return Difference(CameraGridStruct(), window);
  });
}

TEST(ExtendInfo, AddsItsFisheyeWindowsToThoseOfTheDocumentAndSetsTheLoadMode) {
  CameraGridStruct window;
  window.fisheye_info.vc_wnd_param.resize(1);
  window.map_load_type = static_cast<MapLoadType>(4);
  ReadExtendInfo(R"({"playParams":{"FishEye":{"FiehEyeInfo":[{"No":2}]}}})", window);
  ReadExtendInfo(R"({"Zoom":3})", window);
  EXPECT_EQ(window.fisheye_info.vc_wnd_param.size(), 2u);
  EXPECT_EQ(window.map_load_type, 1);
}

TEST(AReadView, TakesItsOwnKeysAndOnlyADownloadKnowsSharing) {
  ExpectCases([](const std::string& view, DocumentOrigin origin) {
    return Difference(ViewInfo(), ReadViewText(view, origin));
  });
}

TEST(AReadGroup, IsSharedOnlyWhereADownloadSaysOne) {
  ExpectCases([](const std::string& group, DocumentOrigin origin) {
    return Difference(ViewGroupInfo(), ReadGroupText(group, origin));
  });
}

TEST(AReadChangeNumber, IsDecimalDigitsOrNone) {
  ExpectCases([](const std::string& element, DocumentOrigin origin) {
    return std::to_string(ReadViewText(element, origin).nChangeNumber) + " " +
           std::to_string(ReadGroupText(element, origin).nChangeNumber);
  });
}

TEST(AWrittenView, ComesBackAsItWasButForTheKnownAsymmetries) {
  // E-map keys of a camera, too, and zoom windows of an e-map do not travel.
  const std::pair<ResourceType, const char*> rows[] = {
      {ResourceTypeCamera,
       "uPresetIndex=7 map_center_x='' map_center_y='' map_scale_size=0 map_more_info='' map_load_type=1 "
       "calibration_info=((0.123,0.5,1,-0.25),1)"},
      {ResourceTypeEmap, "uPresetIndex=7 calibration_info=((0.123,0.5,1,-0.25),1) zoom_mode=0 local_wins="}};
  for (const auto& [type, changes] : rows) {
    ViewInfo view = ViewWithEverything();
    CameraGridStruct& window = view.vcPages[0].vcWindows[0];
    window.enum_resource_type_ = type;
    const std::string written = WriteViewDocument(view);
    const ViewInfo back = ReadViewText(written.substr(8, written.size() - 9), DocumentOrigin::ListReply);
    EXPECT_EQ(Difference(view, back), "strGUID='' nMethod=0");
    EXPECT_EQ(Difference(window, back.vcPages.at(0).vcWindows.at(0)), changes);
  }
}

}  // namespace
}  // namespace QorviViewPlugin
