// SPDX-License-Identifier: Apache-2.0
#include "CallFixture.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "ResourceStore/DownloadResource.h"
#include "ResourceStore/Element.h"

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
    Elements().PutElements(
        {std::make_shared<CElement>(1, 1001, "camera", 5), std::make_shared<CElement>(2, 1002, "door", 5),
         std::make_shared<CElement>(3, 1005, "elevator", 5), std::make_shared<CElement>(4, 1006, "radar", 5),
         std::make_shared<CElement>(5, 1027, "other", 5), std::make_shared<CElement>(6, 2004, "sensor", 5)});
    Elements().PutArea(9, "area");
    // Notes what is asked for, "<type>:<ids>", and fails for one type; the others leave something in the record.
    Downloader().SetDownload([this](ErrorCode& error, const ResourceStore::CDownloadLogicalResource& request) {
      EXPECT_EQ(request.GetVal_source_type().size(), 1u);
      EXPECT_EQ(request.GetVal_extra_request_type(), 4);
      const int type = request.GetVal_source_type().at(0);
      std::string text = std::to_string(type) + ":";
      for (const unsigned id : request.GetVal_extra_ids()) text += std::to_string(id) + ",";
      downloads.push_back(text);
      if (type == failingType) {
        if (!failsSilently) error = ErrorCode(100, 4, 0, "");
        return false;
      }
      error = ErrorCode(100, 5, 0, "left over");
      return true;
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

  // The names of the windows on the first page.
  static Texts Names(const std::string& request = R"({"ID":"3"})") {
    const std::string response = Call(GetPlanDetail, request).substr(5);
    Texts names;
    for (int i = 1;; ++i) {
      const std::string window = "/PlanPages[1]/PlanItems[" + std::to_string(i) + "]/";
      if (At(response, window + "Sequence") == "(none)") return names;
      names.push_back(At(response, window + "ResourceName"));
    }
  }

  Texts downloads;
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
  ViewInfo view = View(0xFFFFFFF0, kNoId, "name");
  view.strGUID = "guid";
  view.enumViewType = 2;
  view.nAutoCycle = 1;
  view.nCycleTime = 20;
  view.bShared = true;
  view.strSharedUserName = "zoe";
  CacheView(view);
  constexpr char kPlan[] =
      R"(true {"ErrorInfo":"","GroupID":"-1","ID":"-16","Name":"name","Type":2,"AutoCycle":1,"RoundTime":20,)"
      R"("AppCode":"guid","Remark":"","OwnerId":"","CreateTime":"","AutoRun":0,"PlanStartTime":"","PlanEndTime":"",)"
      R"("PlanPages":[],"is_share_view":true,"share_user_name":"zoe"})";
  for (const char* id : {"-16", "4294967280"}) {
    EXPECT_EQ(Call(GetPlanDetail, R"({"AutoRun":5,"ID":")" + std::string(id) + "\"}"), kPlan);
  }
}

TEST_F(PlanDetailTest, PagesWithoutWindowsAreLeftOut) {
  Cache({{Window(100, 1)}, {}, {Window(100, 2), Window(100, 3)}});
  const std::string response = Call(GetPlanDetail, R"({"ID":"3"})").substr(5);
  EXPECT_EQ(At(response, "/PlanPages[1]/windowDivision"), "1");
  EXPECT_EQ(At(response, "/PlanPages[1]/customWindowDivision"), "split");
  EXPECT_EQ(At(response, "/PlanPages[2]/windowDivision"), "3");
  EXPECT_EQ(At(response, "/PlanPages[2]/PlanItems[2]/ResourceID"), "3");
  EXPECT_EQ(At(response, "/PlanPages[3]/windowDivision"), "(none)");
}

TEST_F(PlanDetailTest, EveryKindOfWindowHasItsOwnName) {
  const std::pair<CameraGridStruct, const char*> cases[] = {
      {Window(100, 1, "x"), " "},
      {Window(1001, 1, "preset"), "camera"},
      {Window(1001, 2), ""},
      {Window(1002, 2), "door"},
      {Window(1005, 3), "elevator"},
      {Window(1006, 4), "radar"},
      {Window(1006, 1), ""},
      {Window(1027, 5), "other"},
      {Window(2004, 6), "sensor"},
      {Window(2004, 1), ""},
      {Window(7001, 1, "x"), "Map"},
      {Window(25001, 1), "WebPage"},
      {Window(25001, 1, "http://x"), "http://x"},
      {Window(1012, 1, "x"), "x"},
      {Window(5001, 1, "y"), "y"},
      {Window(29000, 1, "x"), ""},
      {Window(-1, 1, "x"), ""},
  };
  std::vector<CameraGridStruct> windows;
  Texts names;
  for (const auto& [window, name] : cases) {
    windows.push_back(window);
    names.push_back(name);
  }
  Cache({windows});
  EXPECT_EQ(Names(), names);
  EXPECT_EQ(Names(R"({"ID":"3","NeedResourceName":false})"), Texts(names.size()));
}

TEST_F(PlanDetailTest, NamesAreFetchedKindByKindEachIdOnce) {
  Cache({{Window(1027, 5), Window(1006, 4), Window(1001, 8), Window(100, 1), Window(7001, 2)},
         {},
         {Window(2004, 6), Window(1005, 3), Window(1002, 2), Window(1001, 1), Window(1001, 8), Window(1012, 9)}});
  Call(GetPlanDetail, R"({"ID":"3","NeedResourceName":false})");
  EXPECT_EQ(downloads, Texts());
  Call(GetPlanDetail, R"({"ID":"3"})");
  EXPECT_EQ(downloads, (Texts{"1001:1,8,", "1002:2,", "1005:3,", "1006:4,", "2004:6,", "1027:5,"}));
}

TEST_F(PlanDetailTest, TheFirstFailedFetchEndsTheAnswerBeforeItsPages) {
  Cache({{Window(1006, 4), Window(1002, 2), Window(1001, 1)}});
  failingType = 1002;
  const std::string answer = Call(GetPlanDetail, R"({"ID":"3"})");
  EXPECT_EQ(answer.substr(0, 6), "false ");
  const std::string response = answer.substr(6);
  std::string told;
  for (const char* path : {"/ErrorInfo", "/Name", "/GroupID", "/PlanPages[1]/windowDivision"})
    told += At(response, path) + " ";
  EXPECT_EQ(told, "Not permitted three 8 (none) ");
  EXPECT_EQ(downloads, (Texts{"1001:1,", "1002:2,"}));

  failsSilently = true;
  EXPECT_EQ(Call(GetPlanDetail, R"({"ID":"3"})").substr(0, 20), R"(true {"ErrorInfo":"")")
      << "a fetch is not told by the record of the one before";
}

TEST_F(PlanDetailTest, CyclesNameTheirResourcesWhetherOrNotNamesAreAskedFor) {
  std::vector<CameraGridStruct> windows;
  for (int type : {0, 1, 2}) {
    windows.push_back(Window(100, 0));
    windows.back().single_cycle = {SingleWndCycleType{type}, 5, "round", {{4294967295u, 1}, {2, 9}}};
  }
  Cache({windows});
  const std::string response = Call(GetPlanDetail, R"({"ID":"3","NeedResourceName":false})").substr(5);
  std::string told;
  for (const std::string window : {"1", "2", "3"}) {
    for (const std::string resource : {"[1]", "[2]"}) {
      const std::string path = "/PlanPages[1]/PlanItems[" + window + "]/CycleInfo/CycleResourceID" + resource;
      told += At(response, path + "/SiteID") + " '" + At(response, path + "/ResourceName") + "' ";
    }
  }
  EXPECT_EQ(told, "4294967295 'camera' 2 '' 4294967295 '' 2 'area' 4294967295 '' 2 '' ");
}

TEST_F(PlanDetailTest, ARequestThatWaitsForTheDownloadLoadsTheViewsItself) {
  Downloads().SetDownloadedData(core_test::GroupsDocument(R"({"ID":1,"Name":"one"})"),
                                core_test::ViewsDocument(R"({"ID":5,"Name":"five","ViewGroupID":1})"), true);
  EXPECT_EQ(Call(GetPlanDetail, R"({"ID":"5"})").substr(0, 6), "false ");
  EXPECT_EQ(At(Call(GetPlanDetail, R"({"ID":"5","resource_download_judge":true})").substr(5), "/Name"), "five");
  EXPECT_EQ(Members(1), std::vector<unsigned int>{5});

  // Loaded once, it is not loaded again.
  Downloads().SetDownloadedData("", core_test::ViewsDocument(R"({"ID":6,"Name":"six"})"), true);
  EXPECT_EQ(Call(GetPlanDetail, R"({"ID":"6","resource_download_judge":true})").substr(0, 6), "false ");
}

}  // namespace
}  // namespace call_test
