// SPDX-License-Identifier: Apache-2.0
// How a plan is told, and its windows' way from the request into the model and back.
#include <limits>
#include <set>

#include "CallFixture.h"
#include "QorviViewPlugin/PlanConversion.h"
#include "QorviViewPlugin/protocol/PlanMessages.h"
#include "ResourceStore/DownloadResource.h"

namespace call_test {
namespace {

using namespace QorviViewPlugin;
using ResourceStore::CElement;
namespace protocol = QorviViewPlugin_view_plugin_protocol;

template <class Record>
Record Read(const std::string& text) {
  Record data;
  QorviVideoComm::AdapterOf<Record> record(&data);
  EXPECT_TRUE(QorviVideoComm::ParseJsonRequest(record, text)) << text;
  return data;
}

template <class Record>
std::string Written(Record data) {
  QorviVideoComm::AdapterOf<Record> record(&data);
  return QorviVideoComm::SerializeJsonResponse(record);
}

CameraGridStruct Window(int type, unsigned int elementId, const std::string& extend = "") {
  CameraGridStruct window;
  window.enum_resource_type_ = ResourceType{type};
  window.id_element_ = elementId;
  window.extend_resource = extend;
  return window;
}

class PlanDetailTest : public CallTest {
 protected:
  PlanDetailTest() {
    std::vector<std::shared_ptr<CElement>> elements;
    for (const int type : {1001, 1002, 1005, 1006, 1027, 2004}) {
      const unsigned int id = static_cast<unsigned int>(elements.size()) + 1;
      elements.push_back(std::make_shared<CElement>(id, type, "element " + std::to_string(type), 5));
    }
    Elements().PutElements(elements);
    Elements().PutArea(9, "area");
    // Notes what is asked for, "<type>:<ids>", and fails for one type; the others leave something in the record.
    Downloader().SetDownload([this](ErrorCode& error, const ResourceStore::CDownloadLogicalResource& request) {
      EXPECT_EQ(request.GetVal_source_type().size(), 1u);
      EXPECT_EQ(request.GetVal_extra_request_type(), 4);
      const int type = request.GetVal_source_type().at(0);
      downloads += std::to_string(type) + ":";
      for (const unsigned id : request.GetVal_extra_ids()) downloads += std::to_string(id) + ",";
      if (type != failingType)
        error = ErrorCode(100, 5, 0, "left over");
      else if (!failsSilently)
        error = ErrorCode(100, 4, 0, "");
      return type != failingType;
    });
  }
  ~PlanDetailTest() override { Downloader().SetDownload(nullptr); }

  static ResourceStore::CDownloadResourceStore& Downloader() { return The<ResourceStore::CDownloadResourceStore>(); }

  // Caches view 3 with these pages of windows.
  void Cache(const std::vector<std::vector<CameraGridStruct>>& pages) {
    ViewInfo view = View(3, 8, "three");
    int division = 0;
    for (const auto& windows : pages) view.vcPages.push_back({"split", ++division, windows});
    CacheView(view);
  }
  static std::string Detail(const std::string& members = "") {
    return Call(GetPlanDetail, R"({"ID":"3")" + members + "}");
  }
  // The values at these paths, each with a blank behind it.
  static std::string Values(const std::string& text, std::initializer_list<const char*> paths) {
    std::string values;
    for (const char* path : paths) values += At(text, path) + " ";
    return values;
  }

  std::string downloads;
  int failingType = 0;
  bool failsSilently = false;
};

TEST_F(PlanDetailTest, AnUnknownPlanHasNoFieldsAtAll) {
  protocol::GetPlanDetailResponse notFound;
  notFound.ErrorInfo = "NYyjnxIZwFAorxuFXv";
  Cache({});
  for (const char* request : {"", R"({"ID":"4"})", R"({"ID":3})", R"({"ID":"-3"})"}) {
    EXPECT_EQ(Call(GetPlanDetail, request), "false " + Written(notFound)) << request;
  }
}

TEST_F(PlanDetailTest, APlanIsToldWithItsOwnFields) {
  CacheView({0xFFFFFFF0, "guid", "name", kNoId, 2, kNoId, -1, 1, 20, {}, 0, true, "zoe"});
  ExpectAnswers();
}

TEST_F(PlanDetailTest, PagesWithoutWindowsAreLeftOut) {
  Cache({{Window(100, 1)}, {}, {Window(100, 2), Window(100, 3)}});
  EXPECT_EQ(Values(Detail(), {"/PlanPages[1]/windowDivision", "/PlanPages[1]/customWindowDivision",
                              "/PlanPages[2]/windowDivision", "/PlanPages[2]/PlanItems[2]/ResourceID",
                              "/PlanPages[3]/windowDivision"}),
            "1 split 3 3 (none) ");
}

TEST_F(PlanDetailTest, EveryKindOfWindowHasItsOwnName) {
  Cache({{Window(100, 1, "x"), Window(1001, 1, "preset"), Window(1002, 2), Window(1005, 3), Window(1006, 4),
          Window(1006, 1), Window(1027, 5), Window(2004, 6), Window(2004, 1), Window(7001, 1, "x"), Window(25001, 1),
          Window(25001, 1, "http://x"), Window(1012, 1, "x"), Window(5001, 1, "y"), Window(29000, 1, "x")}});
  const auto names = [](const std::string& detail) {
    std::string text;
    for (int n = 1; n <= 15; ++n) {
      text += At(detail, "/PlanPages[1]/PlanItems[" + std::to_string(n) + "]/ResourceName") + "|";
    }
    return text;
  };
  EXPECT_EQ(names(Detail()),
            " |element 1001|element 1002|element 1005|element 1006||element 1027|element 2004||Map|"
            "WebPage|http://x|x|y||");
  EXPECT_EQ(names(Detail(R"(,"NeedResourceName":false)")), std::string(15, '|'));
}

TEST_F(PlanDetailTest, NamesAreFetchedKindByKindEachIdOnce) {
  Cache({{Window(1027, 5), Window(1006, 4), Window(1001, 8), Window(100, 1), Window(7001, 2)},
         {},
         {Window(2004, 6), Window(1005, 3), Window(1002, 2), Window(1001, 1), Window(1001, 8), Window(1012, 9)}});
  Detail(R"(,"NeedResourceName":false)");
  EXPECT_EQ(downloads, "");
  Detail();
  EXPECT_EQ(downloads, "1001:1,8,1002:2,1005:3,1006:4,2004:6,1027:5,");
}

TEST_F(PlanDetailTest, TheFirstFailedFetchEndsTheAnswerBeforeItsPages) {
  Cache({{Window(1006, 4), Window(1002, 2), Window(1001, 1)}});
  failingType = 1002;
  const std::string answer = Detail();
  EXPECT_EQ(answer.substr(0, 6) + Values(answer, {"/ErrorInfo", "/Name", "/GroupID", "/PlanPages[1]/windowDivision"}),
            "false Not permitted three 8 (none) ");
  EXPECT_EQ(downloads, "1001:1,1002:2,");
  failsSilently = true;
  EXPECT_EQ(Detail().substr(0, 20), R"(true {"ErrorInfo":"")") << "a fetch is not told by the record of the one before";
}

TEST_F(PlanDetailTest, CyclesNameTheirResourcesWhetherOrNotNamesAreAskedFor) {
  const struct {
    int type;
    std::string first, second;
  } cases[] = {{0, "element 1001", ""}, {1, "", "area"}, {2, "", ""}};
  for (const auto& [type, first, second] : cases) {
    CameraGridStruct window = Window(100, 0);
    window.single_cycle = {SingleWndCycleType{type}, 5, "round", {{4294967295u, 1}, {2, 9}}};
    Manager().ClearViewData();
    Cache({{window}});
    EXPECT_NE(Detail(R"(,"NeedResourceName":false)")
                  .find(R"([{"SiteID":"4294967295","ResourceID":"1","ResourceName":")" + first +
                        R"("},{"SiteID":"2","ResourceID":"9","ResourceName":")" + second + R"("}])"),
              std::string::npos)
        << type;
  }
}

TEST_F(PlanDetailTest, ARequestThatWaitsForTheDownloadLoadsTheViewsItself) {
  Downloads().SetDownloadedData(GroupsDocument(R"({"ID":1,"Name":"one"})"),
                                ViewsDocument(R"({"ID":5,"Name":"five","ViewGroupID":1})"), true);
  EXPECT_EQ(Call(GetPlanDetail, R"({"ID":"5"})").substr(0, 6), "false ");
  EXPECT_EQ(At(Call(GetPlanDetail, R"({"ID":"5","resource_download_judge":true})"), "/Name"), "five");
  EXPECT_EQ(Members(1), "5'five' ");
  // Loaded once, it is not loaded again.
  Downloads().SetDownloadedData("", ViewsDocument(R"({"ID":6,"Name":"six"})"), true);
  EXPECT_EQ(Call(GetPlanDetail, R"({"ID":"6","resource_download_judge":true})").substr(0, 6), "false ");
}

TEST(PlanConversionTest, KindsOfContentDifferOnlyForTheEmptyWindow) {
  const std::set<int> kinds = {1001, 1002, 1005, 1006, 1012, 1027, 2004, 5001, 7001, 25001, 29000};
  for (int type = -1; type <= 30000; ++type) {
    const bool isKind = kinds.contains(type);
    EXPECT_EQ(PlanItemTypeToResourceType(type), type == 0 ? 100 : isKind ? type : -1) << type;
    EXPECT_EQ(ResourceTypeToPlanItemType(ResourceType{type}), isKind ? type : 0) << type;
  }
}

// Names, capabilities and the numbers that the model has no place for are gone; the window number is the sequence.
TEST(PlanConversionTest, AWindowComesBackAsTheModelHoldsIt) {
  const auto item = Read<protocol::PlanItem>(testing_support::Cases(CALL_TEXTS).at(0).text);
  auto expected = item;
  expected.ResourceName = expected.ResourceCapability = expected.PresetName = expected.PermissionItem = "";
  expected.ConnectType = expected.CameraType = expected.DeviceID = expected.PresetPointIndex = 0;
  expected.OnlineStatus = 1;
  expected.IsDelete = false;
  expected.WindowNo = 3;
  expected.FishEye.FisheyeWndParam = {{1, "1.500000", "-2.000000", "30.000000"},
                                      {2, "0.000000", "0.000000", "0.000000"}};
  expected.CycleInfo.CycleResourceID = {{"21", "4294967295", ""}, {"0", "0", ""}};
  const CameraGridStruct window = ToWindow(item);
  EXPECT_EQ(Written(ToPlanItem(window)), Written(expected));
  // What the host cannot see.
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
  for (const auto& [read, expected] : testing_support::Cases(CALL_TEXTS)) {
    const std::string written = Written(ToPlanItem(ToWindow(Read<protocol::PlanItem>(read))));
    EXPECT_NE(written.find(expected.at(0)), std::string::npos) << read << written;
  }
}

TEST(PlanConversionTest, SomeFieldsAreShownOnlyInTheirContext) {
  CameraGridStruct window;
  const auto expectShown = [&window](const std::string& part) {
    const std::string written = Written(ToPlanItem(window));
    EXPECT_NE(written.find(part), std::string::npos) << part << " is not in " << written;
  };
  expectShown(R"({"Sequence":-1,"ResourceType":1001,"ResourceID":"-1",)");
  expectShown(R"("WindowNo":0,"Xtop":"-1.000000",)");
  expectShown(R"("CenterMark":{"TopX":-1000,)");
  window.stream_type = ResourceStore::Stream::StreamType{100};
  expectShown(R"("StreamType":-1,"Con)");
  window.stream_type = ResourceStore::Stream::StreamType{101};
  expectShown(R"("StreamType":101,"Con)");
  window.fisheye_info = {1, 2, 3, {{4, 1.0f, 1.0f, 1.0f}}};
  expectShown(
      R"("FishEye":{"is_fisheye_open":false,"mount_type":0,"expand_mode":0,"window_no":0,"FisheyeWndParam":[]})");
  window.single_cycle = {SingleWndCycleAreas, 5, "through nothing", {}};
  expectShown(R"("CycleInfo":{"cycle_type":0,"cycle_time":0,"CycleName":"","CycleResourceID":[]})");
  window.relate_view_win_no = "-1";
  window.n_seq_index = 5;
  expectShown(R"("ViewItemWindowNo":"-1")");
  const float infinity = std::numeric_limits<float>::infinity();
  window.local_wins = {{6, {0.1234f, -0.0009f, infinity, -infinity}}};
  expectShown(R"("ZoomWindow":[{"No":6,"TopX":123,"TopY":0,"BottomX":2147483647,"BottomY":-2147483648}])");
  expectShown(R"("ViewItemWindowNo":"5")");
  window.relate_view_win_no = " -1";
  expectShown(R"("ViewItemWindowNo":" -1")");
}

}  // namespace
}  // namespace call_test
