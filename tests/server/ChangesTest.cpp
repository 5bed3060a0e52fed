// SPDX-License-Identifier: Apache-2.0
// Who hears what on the change streams, in which order, and how a listener that was away catches up.
#include <SQLiteCpp/SQLiteCpp.h>
#include <sqlite3.h>

#include <regex>
#include <set>
#include <thread>
#include <tuple>

#include "../Cases.h"
#include "TestClient.h"
#include "server/login/Accounts.h"
#include "server/site/Site.h"
#include "server/store/Database.h"

namespace server::test {
namespace {

// Numbers are given from 1, to views and groups each.
class ChangesTest : public ServerTest {};

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
}

TEST_F(ChangesTest, AStrangersPrivateThingsAreNotHeardOf) {
  EventStream stream = bob.Listen();
  ann.AddView("V", ann.AddGroup("G", -1, kAnn), kAnn);
  ann.Put("V0/Views/Move", MoveBody(1, -1, "1"));
  ann.Delete("V0/Views/1");
  ann.Delete("V0/ViewGroups/1");
  ann.AddGroup("marker", -1, kPublic);
  const Event event = stream.Next();
  EXPECT_EQ(event.Brief(), "ViewGroups +2");
  EXPECT_EQ(event.number, ann.Sequence());
}

TEST_F(ChangesTest, ASharedViewAppearsChangesAndDisappearsForThoseWhoHaveIt) {
  ann.AddView("V", ann.AddGroup("G", -1, kAnn), kAnn);
  EventStream owner = ann.Listen();
  EventStream sharer = bob.Listen();
  ann.Share(1, "2");
  const Event appeared = sharer.Next();
  EXPECT_EQ(appeared.Brief(), "Views +1");
  for (const char* part :
       {R"("ViewGroupID":-1,"UserID":1,)",
        R"("CycleTime":10,"SharedUserID":1,"SharedUserName":"ann","ChangeNumber":"3","Method":0})"}) {
    EXPECT_NE(appeared.text.find(part), std::string::npos) << appeared.text;
  }

  ann.Share(1, "2,3");  // nothing new for bob, nor for ann, but for its number
  for (const Client* client : {&ann, &bob, &cid}) EXPECT_EQ(client->Show("View", 1, {"ChangeNumber"}), "4");
  ann.Put("V0/Views/1", ViewBody("W", 1, kAnn));
  ann.Delete("V0/ViewGroups/1");
  EXPECT_EQ(sharer.NextBriefs(2), "Views *1; Views -1");
  EXPECT_EQ(owner.NextBriefs(3), "OwnViews *1; Views -1; OwnViewGroups -1");
}

TEST_F(ChangesTest, TheSessionThatEditsHearsItsOwnAndAGroupGoesAfterItsContentDeepestFirst) {
  for (int32_t parent : {-1, -1, 2, 3}) ann.AddGroup("G", parent, kPublic);
  for (int32_t group : {1, 2, 4, 3}) ann.AddView("V", group, kPublic);
  EventStream own = ann.Listen();
  EventStream others[] = {LogIn("ann").Listen(), bob.Listen()};
  ann.AddView("V", ann.AddGroup("G", -1, kPublic), kPublic, R"(,"PlanPages":[])");
  ann.Put("V0/Views/5", ViewBody("W", -1, kPublic));
  ann.Put("V0/ViewGroups/5", GroupBody("H", -1, -1));
  ann.Delete("V0/Views/5");
  ann.Delete("V0/ViewGroups/2");
  // What follows from an edit is everybody's.
  const std::string content = "Views -3; Views -4; Views -2; ViewGroups -4; ViewGroups -3; ";
  EXPECT_EQ(own.NextBriefs(11), "OwnViewGroups +5; OwnViews +5; OwnViews *5; OwnViewGroups *5; OwnViews -5; " +
                                    content + "OwnViewGroups -2");
  for (EventStream& stream : others) {
    EXPECT_EQ(stream.NextBriefs(11),
              "ViewGroups +5; Views +5; Views *5; ViewGroups *5; Views -5; " + content + "ViewGroups -2");
  }
  EXPECT_EQ(ann.GroupIds() + " " + ann.ViewIds(), "1,5 1");
  ann.Delete("V0/ViewGroups/5");
  EXPECT_EQ(ann.AddGroup("new", -1, kPublic), 6) << "numbers are not given twice";
}

TEST_F(ChangesTest, AChangesNumberStandsInTheAnswerTheListsTheObjectAndTheEvent) {
  EventStream stayed = ann.Listen(0);
  const auto numbersIn = [this](const char* path) {
    const Answer list = ann.Get(path);
    const std::string text = list.DataText();
    std::string numbers;
    const std::regex number(R"re("ChangeNumber":"([0-9]+)")re");
    for (std::sregex_iterator found(text.begin(), text.end(), number), end; found != end; ++found) {
      numbers += (numbers.empty() ? "" : " ") + found->str(1);
    }
    EXPECT_EQ(numbers.rfind(list.headers.at("resource-sequence"), 0), 0u) << list.body;
    return numbers;
  };
  EXPECT_EQ(ann.Get("V0/Views").DataText(), R"({"ChangeNumber":"0","ViewList":{"View":[]}})") << "before the first";
  // Afterwards: the number of the groups' list, then of each group; the same of views.
  for (const auto& [edit, expected] : testing_support::Cases(TABLES "Edits.txt")) {
    SCOPED_TRACE(edit);
    EXPECT_EQ(ann.Do(edit).DataText(), expected.at(0));
    EXPECT_EQ(numbersIn("V0/ViewGroups") + "; " + numbersIn("V0/Views"), expected.at(1));
  }
  EXPECT_EQ(ann.Listen(15).Next().Brief(), "OwnViewGroups -1") << "the number of the group that was named";

  Restart(Options());
  EventStream returned = ann.Listen(0);
  for (int i = 1; i <= 16; ++i) {
    if (i == 11) continue;  // the sharing is no change for the owner
    const Event event = stayed.Next();
    EXPECT_EQ(event.number, i);
    EXPECT_EQ(event.Element()["ChangeNumber"].GetString(), std::to_string(i)) << event.text;
    EXPECT_EQ(returned.Next().text, event.text);
  }
}

TEST_F(ChangesTest, AListenerWhoWasAwayHearsTheSameAsOneWhoStayed) {
  EventStream stayed = bob.Listen(0);
  ann.AddView("V", ann.AddGroup("G", -1, kAnn), kAnn);
  ann.Share(1, "2");
  for (int i = 0; i < 600; ++i) {  // more than is read at once
    ann.Put("V0/Views/1", ViewBody("W" + std::to_string(i), 1, kAnn));
    if (i % 50 == 0) bob.AddGroup("bob's " + std::to_string(i), -1, kBob);
  }
  ann.Delete("V0/Views/1");

  EventStream returned = bob.Listen(0);
  EventStream owner = ann.Listen(0);
  EventStream otherSession = LogIn("bob").Listen(0);
  for (int i = 0; i < 614; ++i) {
    const Event a = stayed.Next();
    const Event b = returned.Next();
    const Event c = otherSession.Next();
    ASSERT_EQ(std::tie(a.number, a.name, a.text), std::tie(b.number, b.name, b.text));
    ASSERT_EQ(b.text, c.text);
    ASSERT_TRUE(b.name == c.name || b.name == "Own" + c.name) << b.name << ' ' << c.name;
  }
  EXPECT_EQ(owner.NextBriefs(2), "OwnViewGroups +1; OwnViews +1");
  EXPECT_EQ(owner.Next().number, 4) << "the sharing, 3, is no change for the owner";

  EXPECT_EQ(bob.Listen(bob.Sequence() - 1).Next().Brief(), "Views -1");
}

TEST_F(ChangesTest, OnlyTheKeptChangesCanBeAskedFor) {
  const auto restart = [this](uint64_t kept) { RestartWith([kept](auto& options) { options.keepChanges = kept; }); };
  restart(3);
  for (int i = 0; i < 5; ++i) ann.AddGroup("G", -1, kPublic);
  EXPECT_EQ(ann.Listen(1).Status(), 410);
  EXPECT_EQ(ann.Listen(6).Status(), 410) << "never given";
  EXPECT_EQ(ann.Listen(2).NextBriefs(3), "OwnViewGroups +3; OwnViewGroups +4; OwnViewGroups +5");
  EXPECT_EQ(ann.Listen(5).Status(), 200);

  restart(3);
  EXPECT_EQ(ann.Sequence(), 5);
  EXPECT_EQ(ann.Listen(1).Status(), 410);
  EXPECT_EQ(ann.Listen(4).Next().Brief(), "ViewGroups +5") << "another session's edit by now";

  restart(0);
  ann.AddGroup("G", -1, kPublic);
  restart(0);
  EXPECT_EQ(ann.Listen(5).Status(), 410) << "nobody can hear of it any more";
  EXPECT_EQ(ann.Listen(6).Status(), 200);
}

TEST_F(ChangesTest, NoMoreBytesOfChangesAreKeptThanWanted) {
  const std::string body = ViewBody("V", -1, kAnn, Ballast(100000));
  const auto restart = [this] { RestartWith([](auto& options) { options.keepChangeBytes = 450000; }); };
  restart();
  ann.Post("V0/Views", body);
  for (int i = 0; i < 20; ++i) ann.Put("V0/Views/1", body);
  for (int i = 0; i < 2; ++i) {  // the same once they are counted in the store
    const int64_t last = ann.Sequence();
    EXPECT_EQ(ann.Listen(last - 4).NextBriefs(4), i == 0 ? "OwnViews *1; OwnViews *1; OwnViews *1; OwnViews *1"
                                                         : "Views *1; Views *1; Views *1; OwnViews *1");
    EXPECT_EQ(ann.Listen(last - 5).Status(), 410);
    EXPECT_EQ(SQLite::Database(File()).execAndGet("SELECT count(*) FROM documents").getInt(), 4);
    restart();
    ann.Put("V0/Views/1", body);
  }
  ann.Put("V0/Views/1", ViewBody("V", -1, kAnn, Ballast(600000)));
  EXPECT_EQ(ann.Listen(ann.Sequence() - 1).Next().Brief(), "OwnViews *1") << "the last one is kept, whatever its size";
}

TEST_F(ChangesTest, DocumentsCountForAsLongAsAnyChangeHasThem) {
  RestartWith([](auto& options) { options.keepChangeBytes = 450000; });
  for (int view = 1; view <= 10; ++view) ann.AddView("V", -1, kAnn, Ballast(100000));
  for (int view = 1; view <= 10; ++view) ann.Share(view, "2");
  ann.Share(10, "3");
  EXPECT_EQ(ann.Listen(16).Status(), 200) << "once for the two changes that have it";
  for (int view = 1; view <= 10; ++view) ann.Put("V0/Views/" + std::to_string(view), ViewBody("V", -1, kAnn));
  EXPECT_LE(SQLite::Database(File()).execAndGet("SELECT sum(length(text)) FROM documents").getInt(), 460000);
}

TEST_F(ChangesTest, AListenerWhoMaySeeNothingMovesOnAllTheSame) {
  RestartWith([](auto& options) { options.keepChanges = 1000; });
  ann.AddView("V", -1, kAnn);
  for (int i = 0; i < 700; ++i) ann.Put("V0/Views/1", ViewBody("V", -1, kAnn));  // more than are read at once
  EventStream returned = bob.Listen(0);
  EXPECT_EQ(returned.NextNote(), 701);
  ann.AddGroup("G", -1, kPublic);
  EXPECT_EQ(returned.Next().number, 702);
  EXPECT_EQ(bob.Listen(700).NextNote(), -1) << "no note where an event says it";
}

TEST_F(ChangesTest, LoggingOutEndsTheStreamsOfThatSessionAndNoOther) {
  const Client leaving = LogIn("ann");
  EventStream gone = leaving.Listen();
  EventStream stays = ann.Listen();
  ann.AddGroup("G", -1, kPublic);
  gone.Next();  // by now both are subscribed
  stays.Next();
  ASSERT_EQ(leaving.Delete("V0/Sessions/Current").Error(), "0/0");
  EXPECT_EQ(gone.Next().Brief(), "end");
  EXPECT_EQ(leaving.Get("V0/Views").Error(), "101/2");
  ann.AddGroup("H", -1, kPublic);
  EXPECT_EQ(stays.Next().Brief(), "OwnViewGroups +2");
}

TEST_F(ChangesTest, AStreamThatIsStillCatchingUpEndsWithItsSessionToo) {
  ann.AddGroup("G", -1, kPublic);
  m_server.reset();
  Site site(File(), {100, 1 << 20}, SecondsNow);
  SQLite::Database store(File(), SQLite::OPEN_READWRITE, kStoreWaitMs);
  const Caller listener{kAnn, store.execAndGet("SELECT max(id) FROM sessions WHERE user_id = 1").getInt64()};
  const FeedPtr stays = site.OpenFeed(listener, 0), gone = site.OpenFeed(listener, 0);
  std::vector<Text> heard, missed;
  EXPECT_TRUE(stays->Take(heard));
  EXPECT_EQ(heard.size(), 1u);
  store.exec("DELETE FROM sessions");
  EXPECT_FALSE(gone->Take(missed));
  EXPECT_TRUE(missed.empty());
}

// Long before the next sign of life, by which a stream finds out for itself.
TEST_F(ChangesTest, SessionsThatEndOtherwiseTakeTheirStreamsAlong) {
  EventStream stays = ann.Listen();
  for (const bool isOtherProcess : {false, true}) {
    SCOPED_TRACE(isOtherProcess ? "sessions ended by another process" : "a password set in this process");
    EventStream gone = LogIn("bob").Listen();
    EventStream other = LogIn("bob").Listen();
    ann.AddGroup("G", -1, kPublic);
    gone.Next();  // by now both are subscribed
    other.Next();
    stays.Next();
    if (isOtherProcess) {
      SQLite::Database(File(), SQLite::OPEN_READWRITE, kStoreWaitMs).exec("DELETE FROM sessions WHERE user_id = 2");
    } else {
      std::string error;
      EXPECT_TRUE(m_server->SetPassword("bob", "new", error)) << error;
    }
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(gone.Next().Brief() + other.Next().Brief(), "endend"); }),
              std::chrono::seconds(12));
  }
  ann.AddGroup("H", -1, kPublic);
  EXPECT_EQ(stays.Next().name, "OwnViewGroups");
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
  ann.AddView("V", -1, kPublic);
  for (int i = 0; i < 60; ++i) ann.Put("V0/Views/1", ViewBody("V", -1, kPublic, Ballast(200000)));
  for (int64_t i = 1; i <= 61; ++i) ASSERT_EQ(late.Next().number, i);
}

TEST_F(ChangesTest, DocumentsThatAListenerMayNotSeeAreNotRead) {
  for (int i = 0; i < 40; ++i) ann.AddView("V", -1, kAnn, Ballast(100000));
  m_server.reset();
  const auto pagesReadFor = [this](int32_t listener, int64_t& upTo) {
    Database store(File(), Database::Use::kReading);
    upTo = ReadChangePiece(store, listener, 0, 40, [](int32_t, int64_t) { return nullptr; }).upTo;
    int pages = 0, ignored = 0;
    sqlite3_db_status(store.Handle().getHandle(), SQLITE_DBSTATUS_CACHE_MISS, &pages, &ignored, 0);
    return pages;
  };
  int64_t ofAnn = 0, ofBob = 0;
  EXPECT_GT(pagesReadFor(kAnn, ofAnn), 200) << "some ten documents of 25 pages";
  EXPECT_LT(pagesReadFor(kBob, ofBob), 100);
  EXPECT_LT(ofAnn, 20);
  EXPECT_EQ(ofBob, 40) << "nor do they count";
}

}  // namespace
}  // namespace server::test
