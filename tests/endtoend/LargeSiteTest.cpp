// SPDX-License-Identifier: Apache-2.0
// A site of 10,000 views and 3,000 cameras: what the looking commands answer of it, and what that takes.
#include <sys/resource.h>

#include "ViewctlRunner.h"

namespace test {
namespace {

constexpr int kFolders = 200;
constexpr int kViewsInFolder = 50;
constexpr int kCameras = 3000;

// Folder f holds views whose four windows go through the cameras in turn.
std::string LargeSite() {
  QStringList elements, groups, views;
  for (int i = 0; i < kCameras; ++i) {
    elements += QString(R"({"ID":%1,"Type":1001,"Name":"Camera %2","SiteID":1})").arg(10000 + i).arg(i);
  }
  for (int f = 0; f < kFolders; ++f) {
    groups +=
        QString(R"({"ID":%1,"Name":"Hall %2","ParentViewGroupID":-1,"UserID":-1,"IsSharedView":-1})").arg(1 + f).arg(f);
  }
  for (int v = 0; v < kFolders * kViewsInFolder; ++v) {
    QStringList windows;
    for (int w = 0; w < 4; ++w) {
      windows += QString(R"({"WindowNo":%1,"SequenceIndex":"%1","ResourceType":1001,"ResourceID":%2,"SiteID":1,)"
                         R"("RelateResourceID":-1,"RelateResourceType":-1})")
                     .arg(w)
                     .arg(10000 + (v * 4 + w) % kCameras);
    }
    views += QString(R"({"ID":%1,"Name":"View %2","ViewGroupID":%3,"UserID":-1,"PlanPages":[{"SpliteType":4,)"
                     R"("PlanViewItem":[%4]}]})")
                 .arg(1000 + v)
                 .arg(v)
                 .arg(1 + v / kViewsInFolder)
                 .arg(windows.join(','));
  }
  return QString(R"({"Users":[{"ID":2,"Name":"maria","Password":"sample-maria"}],"Areas":[],"Elements":[%1],)"
                 R"("ViewGroups":[%2],"Views":[%3]})")
      .arg(elements.join(','), groups.join(','), views.join(','))
      .toStdString();
}

class LargeSiteTest : public testing::Test {
 protected:
  // The processor's time that the command took, in seconds, which a busy machine changes little.
  double Seconds(const QStringList& command, Outcome& outcome) const {
    const double before = OfChildren();
    outcome = RunAs(m_site, "maria", command + QStringList{"--timeout", "120"});
    return OfChildren() - before;
  }

  const Site m_site{LargeSite()};

 private:
  static double OfChildren() {
    rusage used{};
    getrusage(RUSAGE_CHILDREN, &used);
    const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
  }
};

TEST_F(LargeSiteTest, IsLookedThroughWithinTwoSecondsAfterTheLoad) {
  Outcome outcome;
  const double load = Seconds({"users"}, outcome);
  const QString typed = "viewctl " + m_site.As("maria").join(' ') + " show 'Hall 17/View 85";
  const std::tuple<QStringList, size_t, const char*> cases[] = {
      {{"find", "10007"}, 14, "shown  camera  10007  Camera 7  public/Hall 0/View 1"},
      {{"find", "camera 29*9"}, 1, "Camera 2999"},
      {{"tree", "--name", "View 99?9"}, 1, "View 9909"},
      {{"replace", "10007", "10008", "--dry-run"}, 14, "would change view 1001 public/Hall 0/View 1: 1 place"},
      {{"__complete", "--line", typed}, 10, "Hall 17/View 850\tview 1850"},
  };
  for (const auto& [command, least, part] : cases) {
    const double taken = Seconds(command, outcome) - load;
    ExpectSaid(outcome, 0, part);
    EXPECT_GE(Lines(outcome.out).size(), least) << outcome;
    RecordProperty(command[0].toStdString(), std::to_string(taken));
    std::printf("%.2f s for %s, beside %.2f s for the load\n", taken, outcome.command.c_str(), load);
#ifndef QORVI_SLOW_BUILD
    EXPECT_LT(taken, 2.0) << outcome.command;
#endif
  }
}

}  // namespace
}  // namespace test
