// SPDX-License-Identifier: Apache-2.0
#include "CallFixture.h"
#include "ResourceStore/DownloadResource.h"
#include "ResourceStore/ElementManager.h"

namespace call_test {
namespace {

using namespace QorviViewPlugin;
using ResourceStore::CElement;

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
  ~PlanDetailTest() override {
    Downloader().SetDownload(nullptr);
    Elements().Clear();
  }

  static ResourceStore::CElementManager& Elements() {
    return Vant::Base::CSingleton<ResourceStore::CElementManager>::Instance();
  }
  static ResourceStore::CDownloadResourceStore& Downloader() {
    return Vant::Base::CSingleton<ResourceStore::CDownloadResourceStore>::Instance();
  }

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
  constexpr char kNotFound[] =
      R"(false {"ErrorInfo":"NYyjnxIZwFAorxuFXv","GroupID":"","ID":"","Name":"","Type":0,"AutoCycle":0,"RoundTime":0,)"
      R"("AppCode":"","Remark":"","OwnerId":"","CreateTime":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"",)"
      R"("PlanPages":[],"is_share_view":false,"share_user_name":""})";
  Cache({});
  for (const char* request : {"", R"({"ID":"4"})", R"({"ID":3})", R"({"ID":"-3"})"}) {
    EXPECT_EQ(Call(GetPlanDetail, request), kNotFound) << request;
  }
}

TEST_F(PlanDetailTest, APlanIsToldWithItsOwnFields) {
  CacheView({0xFFFFFFF0, "guid", "name", kNoId, 2, kNoId, -1, 1, 20, {}, 0, true, "zoe"});
  EXPECT_EQ(
      Call(GetPlanDetail, R"({"AutoRun":5,"ID":"-16"})"),
      R"(true {"ErrorInfo":"","GroupID":"-1","ID":"-16","Name":"name","Type":2,"AutoCycle":1,"RoundTime":20,)"
      R"("AppCode":"guid","Remark":"","OwnerId":"","CreateTime":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"",)"
      R"("PlanPages":[],"is_share_view":true,"share_user_name":"zoe"})");
}

TEST_F(PlanDetailTest, PagesWithoutWindowsAreLeftOut) {
  Cache({{Window(100, 1)}, {}, {Window(100, 2), Window(100, 3)}});
  EXPECT_EQ(Values(Detail(), {"/PlanPages[1]/windowDivision", "/PlanPages[1]/customWindowDivision",
                              "/PlanPages[2]/windowDivision", "/PlanPages[2]/PlanItems[2]/ResourceID",
                              "/PlanPages[3]/windowDivision"}),
            "1 split 3 3 (none) ");
}

TEST_F(PlanDetailTest, EveryKindOfWindowHasItsOwnName) {
  const std::pair<CameraGridStruct, std::string> cases[] = {
      {Window(100, 1, "x"), " "},
      {Window(1001, 1, "preset"), "element 1001"},
      {Window(1002, 2), "element 1002"},
      {Window(1005, 3), "element 1005"},
      {Window(1006, 4), "element 1006"},
      {Window(1006, 1), ""},
      {Window(1027, 5), "element 1027"},
      {Window(2004, 6), "element 2004"},
      {Window(2004, 1), ""},
      {Window(7001, 1, "x"), "Map"},
      {Window(25001, 1), "WebPage"},
      {Window(25001, 1, "http://x"), "http://x"},
      {Window(1012, 1, "x"), "x"},
      {Window(5001, 1, "y"), "y"},
      {Window(29000, 1, "x"), ""},
  };
  for (const auto& [window, name] : cases) {
    Manager().ClearViewData();
    Cache({{window}});
    EXPECT_EQ(At(Detail(), "/PlanPages[1]/PlanItems[1]/ResourceName"), name) << window.enum_resource_type_;
    EXPECT_EQ(At(Detail(R"(,"NeedResourceName":false)"), "/PlanPages[1]/PlanItems[1]/ResourceName"), "");
  }
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

}  // namespace
}  // namespace call_test
