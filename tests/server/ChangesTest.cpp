// SPDX-License-Identifier: Apache-2.0
// Who hears what on the change streams, in which order, and how a listener that was away catches up.
#include <set>
#include <stdexcept>
#include <thread>

#include "TestClient.h"
#include "server/changes/ChangeFeed.h"

namespace server::test {
namespace {

// Numbers are given from 1, to views and groups each.
class ChangesTest : public ServerTest {};

TEST_F(ChangesTest, TheSessionThatEditsHearsItsOwnAndTheOthersHearAChange) {
  EventStream own = ann.Listen();
  EventStream annElsewhere = LogIn("ann").Listen();
  EventStream other = bob.Listen();
  ann.AddView("V", ann.AddGroup("G", -1, kPublic), kPublic, R"(,"PlanPages":[])");
  ann.Put("V0/Views/1", ViewBody("W", -1, kPublic));
  ann.Put("V0/ViewGroups/1", GroupBody("H", -1, -1));
  ann.Delete("V0/Views/1");
  ann.Delete("V0/ViewGroups/1");

  EXPECT_EQ(own.NextBriefs(6),
            "OwnViewGroups 1 method 0; OwnViews 1 method 0; OwnViews 1 method 1; OwnViewGroups 1 method 1; "
            "OwnViews 1 method 2; OwnViewGroups 1 method 2");
  const std::string foreign =
      "ViewGroups 1 method 0; Views 1 method 0; Views 1 method 1; ViewGroups 1 method 1; Views 1 method 2; "
      "ViewGroups 1 method 2";
  EXPECT_EQ(annElsewhere.NextBriefs(6), foreign);
  EXPECT_EQ(other.NextBriefs(6), foreign);
}

TEST_F(ChangesTest, AnEventIsAWholeListReplyOnOneLine) {
  EventStream stream = bob.Listen(0);
  ann.AddView("A \\\"line\\\"", -1, kPublic, R"(,"PlanPages":[{"SpliteType":9}],"Kept":"x\ny")");
  const Event event = stream.Next();
  const Answer list = bob.Get("V0/Views");
  std::string expected = list.body;
  const std::string upTo = R"("ChangeNumber":"1",)";  // a list's own
  ASSERT_EQ(list.DataText().find(upTo), 1u) << list.body;
  expected.erase(expected.find(upTo), upTo.size());
  expected.insert(expected.rfind("}]}}}}"), ",\"Method\":0");
  EXPECT_EQ(event.text, expected);
  EXPECT_EQ(event.number, 1);
  EXPECT_EQ(list.headers.at("resource-sequence"), "1");

  ann.Delete("V0/Views/1");
  EXPECT_EQ(stream.Next().text,
            R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":{"ViewList":{"View":[)"
            R"({"ID":1,"ChangeNumber":"2","Method":2}]}}}})");
}

TEST_F(ChangesTest, AStrangersPrivateThingsAreNotHeardOf) {
  EventStream stream = bob.Listen();
  ann.AddView("V", ann.AddGroup("G", -1, kAnn), kAnn);
  ann.Put("V0/Views/Move", MoveBody(1, -1, "1"));
  ann.Delete("V0/Views/1");
  ann.Delete("V0/ViewGroups/1");
  ann.AddGroup("marker", -1, kPublic);
  const Event event = stream.Next();
  EXPECT_EQ(event.Brief(), "ViewGroups 2 method 0");
  EXPECT_EQ(event.number, ann.Sequence());
}

TEST_F(ChangesTest, ASharedViewAppearsChangesAndDisappearsForThoseWhoHaveIt) {
  const int32_t group = ann.AddGroup("G", -1, kAnn);
  ann.AddView("V", group, kAnn);
  EventStream owner = ann.Listen();
  EventStream sharer = bob.Listen();
  ann.Post("V1/View/1/Share", ShareBody("2"));
  const Event appeared = sharer.Next();
  EXPECT_EQ(appeared.Brief(), "Views 1 method 0");
  EXPECT_NE(appeared.text.find(R"("ViewGroupID":-1,"UserID":1,)"), std::string::npos) << appeared.text;
  EXPECT_NE(
      appeared.text.find(R"("CycleTime":10,"SharedUserID":1,"SharedUserName":"ann","ChangeNumber":"3","Method":0})"),
      std::string::npos)
      << appeared.text;

  ann.Post("V1/View/1/Share", ShareBody("2,3"));  // nothing new for bob, nor for ann, but for its number
  for (const Client* client : {&ann, &bob, &cid}) EXPECT_EQ(client->Show("View", 1, {"ChangeNumber"}), "4");
  ann.Put("V0/Views/1", ViewBody("W", group, kAnn));
  ann.Delete("V0/ViewGroups/1");
  EXPECT_EQ(sharer.NextBriefs(2), "Views 1 method 1; Views 1 method 2");
  EXPECT_EQ(owner.NextBriefs(3), "OwnViews 1 method 1; Views 1 method 2; OwnViewGroups 1 method 2");
}

TEST_F(ChangesTest, AGroupGoesAfterItsContentDeepestFirst) {
  const int32_t top = ann.AddGroup("top", -1, kPublic);
  const int32_t left = ann.AddGroup("left", top, kPublic);
  const int32_t deep = ann.AddGroup("deep", left, kPublic);
  for (int32_t group : {top, deep, left}) ann.AddView("V", group, kPublic);
  EventStream own = ann.Listen();
  EventStream other = bob.Listen();
  ann.Delete("V0/ViewGroups/1");
  const std::string members =
      "Views 2 method 2; Views 3 method 2; Views 1 method 2; ViewGroups 3 method 2; ViewGroups 2 method 2; ";
  EXPECT_EQ(other.NextBriefs(6), members + "ViewGroups 1 method 2");
  EXPECT_EQ(own.NextBriefs(6), members + "OwnViewGroups 1 method 2") << "what follows from an edit is everybody's";
}

TEST_F(ChangesTest, AnObjectBearsTheNumberOfItsLastChangeInListsAndEvents) {
  EventStream stayed = bob.Listen(0);
  const auto numbers = [this] {  // of group 1, 2; of view 1, 2
    std::string text;
    for (const char* kind : {"ViewGroup", "View"}) {
      for (int32_t id : {1, 2}) text += bob.Show(kind, id, {"ChangeNumber"}) + (id == 1 ? " " : "; ");
    }
    return text;
  };
  for (const char* name : {"G", "H"}) ann.AddGroup(name, -1, kPublic);
  for (const char* name : {"V", "W"}) ann.AddView(name, 1, kPublic);
  EXPECT_EQ(numbers(), "1 2; 3 4; ");
  ann.Put("V0/Views/Move", MoveBody(1, 2, "2,1"));
  EXPECT_EQ(numbers(), "1 2; 6 5; ");
  ann.Put("V0/ViewGroups/Move", MoveBody(2, 1, "2"));
  ann.Put("V0/Views/2", ViewBody("U", 2, kPublic));
  ann.Put("V0/ViewGroups/1", GroupBody("I", -1, -1));
  EXPECT_EQ(numbers(), "9 7; 6 8; ");
  ann.Delete("V0/ViewGroups/1");
  EXPECT_EQ(ann.Sequence(), 13);

  std::string told;
  for (int i = 1; i <= 13; ++i) {
    const Event event = stayed.Next();
    EXPECT_EQ(event.number, i);
    EXPECT_EQ(event.ChangeNumber(), std::to_string(i)) << event.text;
    told += event.text;
  }
  Restart(Options());
  EventStream returned = bob.Listen(0);
  std::string read;
  for (int i = 1; i <= 13; ++i) read += returned.Next().text;
  EXPECT_EQ(read, told);
}

TEST_F(ChangesTest, AListenerWhoWasAwayHearsTheSameAsOneWhoStayed) {
  EventStream stayed = bob.Listen(0);
  const int32_t group = ann.AddGroup("G", -1, kAnn);
  ann.AddView("V", group, kAnn);
  ann.Post("V1/View/1/Share", ShareBody("2"));
  for (int i = 0; i < 600; ++i) {  // more than is read at once
    ann.Put("V0/Views/1", ViewBody("W" + std::to_string(i), group, kAnn));
    if (i % 50 == 0) bob.AddGroup("bob's " + std::to_string(i), -1, kBob);
  }
  ann.Delete("V0/Views/1");

  EventStream returned = bob.Listen(0);
  EventStream owner = ann.Listen(0);
  EventStream otherSession = LogIn("bob").Listen(0);
  for (int i = 0; i < 614; ++i) {
    const Event a = stayed.Next();
    const Event b = returned.Next();
    ASSERT_EQ(a.number, b.number);
    ASSERT_EQ(a.name, b.name);
    ASSERT_EQ(a.text, b.text);
    const Event c = otherSession.Next();
    ASSERT_EQ(b.text, c.text);
    if (c.name != b.name) {
      ASSERT_EQ(b.name, "Own" + c.name);
    }
  }
  EXPECT_EQ(owner.NextBriefs(2), "OwnViewGroups 1 method 0; OwnViews 1 method 0");
  EXPECT_EQ(owner.Next().number, 4) << "the sharing, 3, is no change for the owner";

  EXPECT_EQ(bob.Listen(bob.Sequence() - 1).Next().Brief(), "Views 1 method 2");
}

TEST_F(ChangesTest, OnlyTheKeptChangesCanBeAskedFor) {
  const auto restart = [this] { RestartWith([](auto& options) { options.keepChanges = 3; }); };
  restart();
  for (int i = 0; i < 5; ++i) ann.AddGroup("G", -1, kPublic);
  EXPECT_EQ(ann.Listen(1).Status(), 410);
  EXPECT_EQ(ann.Listen(6).Status(), 410) << "never given";
  EXPECT_EQ(ann.Listen(2).NextBriefs(3),
            "OwnViewGroups 3 method 0; OwnViewGroups 4 method 0; OwnViewGroups 5 method 0");
  EXPECT_EQ(ann.Listen(5).Status(), 200);

  restart();
  EXPECT_EQ(ann.Sequence(), 5);
  EXPECT_EQ(ann.Listen(1).Status(), 410);
  EXPECT_EQ(ann.Listen(4).Next().Brief(), "ViewGroups 5 method 0") << "another session's edit by now";
}

TEST_F(ChangesTest, LoggingOutEndsTheStreamsOfThatSessionAndNoOther) {
  const Client leaving = LogIn("ann");
  EventStream gone = leaving.Listen();
  EventStream stays = ann.Listen();
  ann.AddGroup("G", -1, kPublic);
  gone.Next();  // by now it is subscribed
  ASSERT_EQ(leaving.Delete("V0/Sessions/Current").Error(), "0/0");
  EXPECT_EQ(gone.Next().Brief(), "end");
  EXPECT_EQ(leaving.Get("V0/Views").Error(), "101/2");
  EXPECT_EQ(stays.Next().Brief(), "OwnViewGroups 1 method 0");
}

// Several clients edit at once while others listen: every listener hears every change once, in order, and ends up
// knowing what the list holds.
TEST_F(ChangesTest, ListenersFollowEditorsThatRace) {
  constexpr int kEditors = 4;
  constexpr int kEdits = 40;
  std::vector<EventStream> streams;
  for (int i = 0; i < 6; ++i) streams.push_back((i % 2 == 0 ? bob : cid).Listen(0));
  std::vector<std::thread> editors;
  for (int e = 0; e < kEditors; ++e) {
    editors.emplace_back([this, e] {
      const Client client = LogIn(e % 2 == 0 ? "ann" : "bob");
      std::vector<int32_t> mine;
      for (int i = 0; i < kEdits; ++i) {
        if (i % 4 == 3) {
          client.Delete("V0/Views/" + std::to_string(mine.back()));
          mine.pop_back();
        } else {
          mine.push_back(client.AddView("V", -1, kPublic));
        }
      }
    });
  }
  for (std::thread& editor : editors) editor.join();

  const std::string list = bob.ViewIds();
  for (EventStream& stream : streams) {
    std::set<int32_t> known;
    for (int i = 1; i <= kEditors * kEdits; ++i) {
      const Event event = stream.Next();
      ASSERT_EQ(event.number, i);
      const int32_t id = event.Element()["ID"].GetInt();
      ASSERT_EQ(event.Element()["Method"].GetInt() == 2 ? known.erase(id) : known.insert(id).second, 1u);
    }
    std::string ids;
    for (int32_t id : known) ids += (ids.empty() ? "" : ",") + std::to_string(id);
    EXPECT_EQ(ids, list);
  }
}

TEST_F(ChangesTest, AListenerThatReadsLateLosesNothing) {
  EventStream late = bob.Listen();
  const std::string pages = R"(,"PlanPages":[],"Ballast":")" + std::string(200000, 'x') + "\"";
  ann.AddView("V", -1, kPublic, pages);
  for (int i = 0; i < 120; ++i) ann.Put("V0/Views/1", ViewBody("V", -1, kPublic, pages));
  for (int64_t i = 1; i <= 121; ++i) ASSERT_EQ(late.Next().number, i);
}

struct BrokenStore : ChangeSource {
  Reach ReadChanges(const FeedPtr&, int64_t, std::vector<Change>&) override { throw std::runtime_error("disk full"); }
  void Unsubscribe(ChangeFeed*) override {}
  bool TouchSession(int64_t) override { throw std::runtime_error("disk full"); }
};

TEST(ChangeFeed, EndsWhereTheStoreFails) {
  BrokenStore store;
  const auto feed = std::make_shared<ChangeFeed>(store, Caller{}, 0);
  std::vector<Text> events;
  EXPECT_FALSE(feed->Take(events));
  EXPECT_FALSE(feed->KeepAlive());
}

}  // namespace
}  // namespace server::test
