// SPDX-License-Identifier: Apache-2.0
#include "drawing/Words.h"

#include <gtest/gtest.h>

#include "Plans.h"

namespace test {
namespace {

using Lines = std::vector<std::string>;

Lines FactsOf(const drawing::Page& page, size_t window = 0) {
  Lines lines;
  for (const drawing::Fact& fact : drawing::FactsOf(page.windows.at(window))) lines.push_back(fact.text.toStdString());
  return lines;
}

TEST(WordsTest, EachExtraOfAWindowIsSaid) {
  const std::pair<std::string, Lines> cases[] = {
      {R"("PresetId":3,"PresetName":"Stairs","ExtendResource":"Stairs")", {"preset 3 “Stairs”"}},
      {R"("CruiseIndex":1,"TrackIndex":2)", {"cruise 1", "track 2"}},
      {R"("PresetId":-1,"CruiseIndex":-1,"TrackIndex":-1)", {}},
      {R"("RelateResourceType":4,"RelateResourceID":2208,"RelateResourceName":"Drivers")",
       {"related: door 2208 “Drivers”"}},
      {R"("RelateResourceType":1005,"RelateResourceID":9)", {"related: elevator 9"}},
      {R"("Xtop":"0.100000","Ytop":"0.200000","Xbottom":"0.600000","Ybottom":"0.700000")",
       {"digital zoom 0.1,0.2 to 0.6,0.7"}},
      {R"("Xtop":"-1.000000","Ytop":"-1.000000","Xbottom":"-1.000000","Ybottom":"-1.000000")", {}},
      {R"("Xtop":"0.5","Ytop":"nan","Xbottom":"inf","Ybottom":"1e999")", {}},
      {R"("Xtop":"-7","Ytop":"0.5","Xbottom":"99","Ybottom":"0.75")", {"digital zoom 0,0.5 to 1,0.75"}},
      {R"("CenterMark":{"TopX":250,"TopY":250,"BottomX":750,"BottomY":750,"StreamType":2})",
       {"centre mark 0.25,0.25 to 0.75,0.75", "stream 2"}},
      {R"("CenterMark":{"TopX":-1000,"TopY":-1000,"BottomX":-1000,"BottomY":-1000,"StreamType":0})", {}},
      {R"("ZoomWindowList":{"ZoomMode":1,"ZoomWindow":[{"No":4,"TopX":100,"TopY":150,"BottomX":350,"BottomY":400},)"
       R"({"No":5,"TopX":9,"TopY":9,"BottomX":9,"BottomY":9}]})",
       {"zoom window 4 at 0.1,0.15 to 0.35,0.4", "zoom window 5 at nowhere", "zoom mode 1"}},
      {R"("RelatedZoomWindow":{"ViewItemWindowNo":"8","ZoomWindowNo":1})",
       {"shows zoom window 1 of window 8", "which this page does not have"}},
      {R"("FishEye":{"is_fisheye_open":true,"mount_type":1,"expand_mode":3,"window_no":2,"FisheyeWndParam":[)"
       R"({"WndNo":0,"PosX":"0.125000","PosY":"0.400000","Zoom":"1.500000"}]})",
       {"fisheye: mount 1, expansion 3, window 2", "part 0 at 0.125,0.4 ×1.5"}},
      {R"("FishEye":{"is_fisheye_open":false,"mount_type":1})", {}},
      {R"("CycleInfo":{"cycle_type":0,"cycle_time":10,"CycleName":"Ends","CycleResourceID":[)"
       R"({"SiteID":"1","ResourceID":"2029","ResourceName":"North end"},{"ResourceID":"2030","ResourceName":" "}]})",
       {"cycle “Ends”", "2 cameras, 10 s each:", "North end", "camera 2030"}},
      {R"("CycleInfo":{"cycle_type":1,"cycle_time":5,"CycleName":"","CycleResourceID":[{"ResourceID":"7"}]})",
       {"cycle", "1 area, 5 s each:", "area 7"}},
      {R"("ExtendResource":"seen\u202efrom\u0007behind")", {"“seen\\u202efrom\\u0007behind”"}},
      // Of another kind than they should be.
      {R"("CycleInfo":[],"FishEye":7,"ZoomWindowList":"x","PresetId":"3","Xtop":0.1,"CenterMark":null)", {}},
  };
  for (const auto& [extra, said] : cases) {
    Lines expected = {"camera 2001", "site 3 · stream 1"};
    expected.insert(expected.end(), said.begin(), said.end());
    EXPECT_EQ(FactsOf(OnePage(1, "", Camera(0, extra))), expected) << extra;
  }
}

TEST(WordsTest, EachKindIsNamed) {
  const auto kind = [](int type, const std::string& more = {}) {
    return OnePage(1, "",
                   R"({"ResourceType":)" + std::to_string(type) + R"(,"ResourceID":"5","SiteID":"-1")" + more + "}");
  };
  EXPECT_EQ(FactsOf(kind(0)), Lines{"empty"});
  EXPECT_EQ(FactsOf(kind(1002)), Lines{"door 5"});
  EXPECT_EQ(FactsOf(kind(2004)), Lines{"element 5 of type 2004"});
  EXPECT_EQ(FactsOf(kind(25001)), (Lines{"web page 5", "no address"}));
  EXPECT_EQ(FactsOf(kind(25001, R"(,"ExtendResource":"https://a.invalid")")),
            (Lines{"web page 5", "“https://a.invalid”"}));
  EXPECT_EQ(FactsOf(kind(29000)), Lines{"resource 5 of type 29000"});
  EXPECT_EQ(
      FactsOf(kind(7001, R"(,"Emap":{"LoadMode":1,"PosX":"52.1","PosY":"11.6","ScaleSize":16,"ExtendInfo":"i"})")),
      (Lines{"map 5", "centre 52.1, 11.6", "scale 16", "load mode 1", "i"}));
}

TEST(WordsTest, AZoomWindowThatIsOnThePageIsFound) {
  const std::string zoom =
      R"("ZoomWindowList":{"ZoomWindow":[{"No":3,"TopX":0,"TopY":0,"BottomX":500,"BottomY":500}]})";
  const drawing::Page page = OnePage(
      4, "", Camera(2, zoom) + "," + Camera(0, R"("RelatedZoomWindow":{"ViewItemWindowNo":"2","ZoomWindowNo":3})"));
  const drawing::Window* source = nullptr;
  const drawing::ZoomWindow* found = FindShown(page, page.windows[1], source);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(source, &page.windows[0]);
  EXPECT_EQ(found->box, QRectF(0, 0, 0.5, 0.5));
  EXPECT_EQ(FindShown(page, page.windows[0], source), nullptr) << "it shows none";
  EXPECT_EQ(FactsOf(page, 1).back(), "shows zoom window 3 of window 2");
}

TEST(WordsTest, TheHeadSaysWhichPageItIs) {
  const QJsonObject plan = Parsed(
      R"({"Name":"W","AutoCycle":1,"RoundTime":20,"is_share_view":true,"share_user_name":"maria","PlanPages":[)"
      R"({"windowDivision":1,"PlanItems":[{}]},{"windowDivision":3,"customWindowDivision":"1+2","PlanItems":[{},{}]}]})");
  const drawing::Page page = drawing::ReadPage(plan, 2);
  EXPECT_EQ(HeadOf(page), "Page 2 of 2, turned every 20 s · layout 3 “1+2” · 2 windows");
  EXPECT_EQ(page.sharedBy, "maria");
  EXPECT_EQ(HeadOf(drawing::ReadPage({}, 1)), "No pages");
}

}  // namespace
}  // namespace test
