// SPDX-License-Identifier: Apache-2.0
#include "drawing/Words.h"

#include <gtest/gtest.h>

#include "../Cases.h"
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
  for (const auto& [extra, said] : testing_support::Cases(TABLES "Words.txt")) {
    Lines expected = {"camera 2001", "site 3 · stream 1"};
    expected.insert(expected.end(), said.begin(), said.end());
    EXPECT_EQ(FactsOf(OnePage(1, "", Camera(0, extra))), expected) << extra;
  }
}

TEST(WordsTest, EachKindIsNamed) {
  for (const auto& [window, said] : testing_support::Cases(TABLES "Words.txt")) {
    EXPECT_EQ(FactsOf(OnePage(1, "", "{" + window + "}")), said) << window;
  }
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
