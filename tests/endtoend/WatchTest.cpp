// SPDX-License-Identifier: Apache-2.0
// What watch says beside its JSON lines: of a server that goes and comes back, and in words.
#include "../platform/ScriptedSite.h"
#include "ViewctlRunner.h"

namespace test {
namespace {

TEST(WatchTest, SaysWhenItLosesTheServerAndWhenItHasCaughtUp) {
  testing_support::ScriptedSite site;
  Running watch({"watch", "--all", "--server", QString::fromStdString(site.Url())}, "any");
  ASSERT_EQ(watch.NextErrorLine(), "Watching; Ctrl-C ends it");
  for (const int status : {503, 500}) {
    // Attempts that fail one after the other are one loss.
    for (int i = 0; i < 2; ++i) site.AnswerOnce("V0/Changes", testing_support::Replying(status));
    site.EndStream();
    const std::string lost = watch.NextErrorLine();
    EXPECT_TRUE(lost.starts_with("Lost the server: ") && lost.ends_with("; trying again")) << lost;
    site.Stream(":\n\n");
    EXPECT_EQ(watch.NextErrorLine(), "Caught up: the server is back, and what changed meanwhile is told");
  }
  EXPECT_EQ(watch.Terminate(), 0);
  EXPECT_EQ(watch.Output(), "") << "stdout is for notices";
}

TEST(WatchTest, GroupsThatLieInEachOtherAreLookedThroughOnce) {
  using namespace testing_support;
  ScriptedSite site;
  Running watch({"watch", "--all", "--server", QString::fromStdString(site.Url())}, "any");
  ASSERT_EQ(watch.NextErrorLine(), "Watching; Ctrl-C ends it");
  site.Stream(Event(13, "ViewGroups", Groups(R"({"ID":1,"ParentViewGroupID":2,"Name":"g","Method":1})")) +
              Event(14, "ViewGroups", Groups(R"({"ID":2,"ParentViewGroupID":1,"Name":"h","Method":0})")) +
              Event(15, "Views", Views(R"({"ID":5,"Name":"w","Method":1})")));
  for (const char* part :
       {R"("id":"1","enum_state":2,"name":"g")", R"("child_id":"2")", R"("id":"5","enum_state":7)"}) {
    ASSERT_TRUE(Has(watch.NextLine(10000), part)) << part;
  }
}

TEST(WatchTest, TellsInWordsWhatAndWhere) {
  const Site site;
  Running watch(site.As("kenji") + QStringList{"watch", "--all", "--text"}, "sample-kenji");
  ASSERT_EQ(watch.NextErrorLine(), "Watching; Ctrl-C ends it");
  for (const auto& [status, command, lines] : RowsOf(TABLES "Watch.txt", site)) {
    ASSERT_EQ(RunAs(site, "maria", Words(command)).status, status);
    for (const std::string& expected : lines) {
      const std::string line = watch.NextLine();
      EXPECT_EQ(line.substr(0, line.find('T')).size(), 10u) << line;
      EXPECT_EQ(line.substr(line.find(' ') + 1, expected.size()), expected);
    }
  }
  EXPECT_EQ(watch.Terminate(), 0);
}

}  // namespace
}  // namespace test
