// SPDX-License-Identifier: Apache-2.0
// A site of 10,000 views and 3,000 cameras: what the looking commands answer of it, and what that takes.
#include <sys/resource.h>

#include "ViewctlRunner.h"
#include "host/JsonText.h"

namespace test {
namespace {

constexpr int kFolders = 200;
constexpr int kViewsInFolder = 50;
constexpr int kCameras = 3000;

std::string Window(int number, int camera) {
  return host::ObjectText()
      .Add("WindowNo", number)
      .Add("SequenceIndex", std::to_string(number))
      .Add("ResourceType", 1001)
      .Add("ResourceID", camera)
      .Add("SiteID", 1)
      .Add("RelateResourceID", -1)
      .Add("RelateResourceType", -1)
      .Text();
}

// Folder f holds views whose four windows go through the cameras in turn.
std::string LargeSite() {
  std::string elements, groups, views;
  for (int i = 0; i < kCameras; ++i) {
    host::ObjectText camera;
    camera.Add("ID", 10000 + i).Add("Type", 1001).Add("Name", "Camera " + std::to_string(i)).Add("SiteID", 1);
    elements += (i == 0 ? "" : ",") + camera.Text();
  }
  for (int f = 0; f < kFolders; ++f) {
    host::ObjectText group;
    group.Add("ID", 1 + f).Add("Name", "Hall " + std::to_string(f)).Add("ParentViewGroupID", -1);
    groups += (f == 0 ? "" : ",") + group.Add("UserID", -1).Add("IsSharedView", -1).Text();
    for (int v = 0; v < kViewsInFolder; ++v) {
      const int number = f * kViewsInFolder + v;
      std::string windows;
      for (int w = 0; w < 4; ++w) windows += (w == 0 ? "" : ",") + Window(w, 10000 + (number * 4 + w) % kCameras);
      host::ObjectText view;
      view.Add("ID", 1000 + number).Add("Name", "View " + std::to_string(number)).Add("ViewGroupID", 1 + f);
      view.Add("UserID", -1).AddRaw("PlanPages", R"([{"SpliteType":4,"PlanViewItem":[)" + windows + "]}]");
      views += (number == 0 ? "" : ",") + view.Text();
    }
  }
  return R"({"Users":[{"ID":2,"Name":"maria","Password":"sample-maria"}],"Areas":[],"Elements":[)" + elements +
         R"(],"ViewGroups":[)" + groups + R"(],"Views":[)" + views + "]}";
}

class LargeSiteTest : public testing::Test {
 protected:
  // The processor's time that the command took, in seconds, which a busy machine changes little.
  double Seconds(const QStringList& command, std::string& out) const {
    const double before = OfChildren();
    const Outcome outcome = RunAs(m_site, "maria", command + QStringList{"--timeout", "120"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    out = outcome.out;
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
  std::string out;
  const double load = Seconds({"users"}, out);
  const QString typed = "viewctl " + m_site.As("maria").join(' ') + " show 'Hall 17/View 85";
  const std::tuple<QStringList, size_t, const char*> cases[] = {
      {{"find", "10007"}, 14, "shown  camera  10007  Camera 7  public/Hall 0/View 1"},
      {{"find", "camera 29*9"}, 1, "Camera 2999"},
      {{"tree", "--name", "View 99?9"}, 1, "View 9909"},
      {{"replace", "10007", "10008", "--dry-run"}, 14, "would change view 1001 public/Hall 0/View 1: 1 place"},
      {{"__complete", "--line", typed}, 10, "Hall 17/View 850\tview 1850"},
  };
  for (const auto& [command, least, part] : cases) {
    const double taken = Seconds(command, out) - load;
    const std::string line = command.join(' ').toStdString();
    EXPECT_GE(Lines(out).size(), least) << line << "\n" << out;
    EXPECT_NE(out.find(part), std::string::npos) << line << "\n" << out.substr(0, 2000);
    RecordProperty(command[0].toStdString(), std::to_string(taken));
    std::printf("%.2f s for %s, beside %.2f s for the load\n", taken, line.c_str(), load);
#ifndef QORVI_SLOW_BUILD
    EXPECT_LT(taken, 2.0) << line;
#endif
  }
}

}  // namespace
}  // namespace test
