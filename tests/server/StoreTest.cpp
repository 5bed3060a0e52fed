// SPDX-License-Identifier: Apache-2.0
// What is kept: across restarts, across seeds, in sessions and for passwords.
#include <SQLiteCpp/Database.h>

#include <thread>

#include "../Cases.h"
#include "TestClient.h"
#include "server/login/Accounts.h"
#include "server/login/LoginGuard.h"
#include "server/login/Secrets.h"
#include "server/store/Database.h"

namespace server::test {
namespace {

class StoreTest : public ServerTest {
 protected:
  std::string Seed(const std::string& text) {
    RestartWithSeed(text);
    return ann.Get("V0/ViewGroups").body + ann.Get("V0/Views").body + std::to_string(ann.Sequence());
  }
  std::string WhySeedFails(const std::string& text, const std::string& dataFile) {
    m_server.reset();
    ViewServerOptions options = Options();
    options.dataFile = dataFile;
    options.seedFile = WriteFile("seed.json", text);
    std::string why = FailureOf([&] { ViewServer refused(options); });
    const std::string begin = "seed " + options.seedFile;
    return why.starts_with(begin) ? why.replace(0, begin.size(), "seed FILE") : why;
  }
};

TEST_F(StoreTest, ARestartKeepsEverything) {
  ann.AddView("V", ann.AddGroup("G", -1, kAnn), kAnn, R"(,"PlanPages":[{"SpliteType":4}],"Extra":"ä")");
  ann.AddView("gone", 1, kAnn);
  ann.Delete("V0/Views/2");
  ann.Share(1, "2,3");
  ann.Put("V1/View/Default/Config", R"({"ViewRequest":{"Type":1,"ID":2}})");
  const auto all = [this] {
    std::string text;
    for (const char* path : {"V0/ViewGroups", "V0/Views", "V1/View/Default/Config"}) {
      for (const Client* client : {&ann, &bob}) text += client->Get(path).body;
    }
    return text;
  };
  const std::string before = all();
  const std::string token = m_server->OpenLocalSession("cid")->token;
  Restart(Options());
  EXPECT_EQ(all(), before);
  EXPECT_EQ(Client(m_server->Port(), token).ViewIds(), "1") << "tokens live in the store";
  EXPECT_EQ(ann.AddView("new", 1, kAnn), 3) << "no number is given again";
}

TEST_F(StoreTest, AnEditThatTheStoreCannotTakeWholeLeavesNothingOfItself) {
  ann.AddView("V", -1, kAnn);
  SQLite::Database store(File(), SQLite::OPEN_READWRITE, kStoreWaitMs);
  store.exec("CREATE TRIGGER full BEFORE INSERT ON changes BEGIN SELECT RAISE(ABORT, 'disk full'); END");
  EXPECT_EQ(ann.Put("V0/Views/1", ViewBody("W", -1, kAnn)).Outcome(), "100/8 500");
  store.exec("DROP TRIGGER full");
  Restart(Options());
  EXPECT_EQ(ann.Show("View", 1, {"Name", "ChangeNumber"}), "V 1");
  EXPECT_EQ(ann.Put("V0/Views/1", ViewBody("W", -1, kAnn)).Outcome(), "0/0 200");
}

TEST_F(StoreTest, MakingAndSeedingAStoreWaitForAnotherProcessThatIsWriting) {
  for (const std::string& file : {File(), Path("new.db")}) {
    SQLite::Database store(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kStoreWaitMs);
    store.exec("PRAGMA journal_mode=WAL; BEGIN IMMEDIATE; CREATE TABLE others (id INTEGER); DROP TABLE others");
    std::thread other([&store] {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      store.exec("COMMIT");
    });
    EXPECT_EQ(WhySeedFails(R"({"Views":[{"ID":3,"Name":"V"}]})", file), "") << file;
    other.join();
  }
}

TEST_F(StoreTest, AConnectionNoticesWhateverOthersCommitAndThatOnce) {
  Database editing(File()), reading(editing, Database::Reading());
  SQLite::Database other(File(), SQLite::OPEN_READWRITE, kStoreWaitMs);
  for (SQLite::Database* writer : {&editing.Handle(), &other, &editing.Handle()}) {
    reading.HasChanged();
    EXPECT_FALSE(reading.HasChanged());
    writer->exec("DELETE FROM sessions WHERE id = (SELECT max(id) FROM sessions)");
    EXPECT_TRUE(reading.HasChanged());
  }
}

TEST_F(StoreTest, WhatIsCommittedOutlastsAPowerCut) {
  Database store(File());
  EXPECT_EQ(store.Handle().execAndGet("PRAGMA synchronous").getInt(), 2) << "FULL";
  EXPECT_EQ(store.Handle().execAndGet("PRAGMA journal_mode").getString(), "wal");
}

TEST_F(StoreTest, NumbersOfAnotherHistoryOfTheStoreAreRefused) {
  ann.AddGroup("G", -1, kPublic);
  ann.AddGroup("H", -1, kPublic);
  const auto history = [this] { return ann.Get("V0/Views").headers.at("resource-history"); };
  const auto status = [this](int64_t after, const std::string& of) { return ann.Listen(after, "&History=" + of); };
  const std::string first = history();
  EXPECT_EQ(ann.Get("V0/ViewGroups").headers.at("resource-history"), first);
  EXPECT_EQ(status(2, first).History(), first);
  EXPECT_EQ(status(3, first).Status(), 410) << "never given";
  EXPECT_EQ(status(2, "else").Status(), 410);
  EXPECT_EQ(status(2, "else").History(), first) << "which says that it is not for want of kept changes";

  m_server.reset();
  std::filesystem::copy_file(File(), Path("copy"));
  Restart(Options());
  const std::string second = history();
  EXPECT_NE(second, first);
  EXPECT_EQ(status(2, first).History(), second) << "a restart costs nobody anything";
  ann.AddGroup("I", -1, kPublic);
  EXPECT_EQ(status(3, first).Status(), 410) << "a number that the history did not have when it ended";
  EXPECT_EQ(status(2, first).NextBriefs(1), "OwnViewGroups +3");

  m_server.reset();
  for (const char* end : {"-wal", "-shm"}) std::filesystem::remove(File() + end);
  std::filesystem::rename(Path("copy"), File());
  Restart(Options());
  ann.AddGroup("not I", -1, kPublic);
  ann.AddGroup("K", -1, kPublic);
  EXPECT_EQ(status(3, second).Status(), 410) << "of what happened after the copy";
  EXPECT_EQ(status(1, first).NextBriefs(3), "ViewGroups +2; OwnViewGroups +3; OwnViewGroups +4");
  EXPECT_EQ(ann.Listen(3).Status(), 200) << "who says no history is served as ever";
}

TEST_F(StoreTest, DocumentsGoWithTheLastThatRefersToThem) {
  RestartWith([](auto& options) { options.keepChanges = 2; });
  ann.AddView("V", -1, kAnn);
  for (int i = 0; i < 10; ++i) ann.Put("V0/Views/1", ViewBody("V", -1, kAnn));
  const auto documents = [this] {
    return SQLite::Database(File()).execAndGet("SELECT count(*) FROM documents").getInt();
  };
  for (int i = 0; i < 2; ++i) ann.AddGroup("G", -1, kAnn);  // the view's last change is not kept any more
  EXPECT_EQ(documents(), 1);
  ann.Put("V0/Views/1", ViewBody("V", -1, kAnn));
  EXPECT_EQ(documents(), 1);
  ann.Delete("V0/Views/1");
  for (int i = 0; i < 2; ++i) ann.AddGroup("G", -1, kAnn);
  EXPECT_EQ(documents(), 0);
}

TEST_F(StoreTest, SeedingTwiceChangesNothingAndLeavesWhatUsersMadeOfIt) {
  const auto [seed, expected] = testing_support::Cases(TABLES "Seeds.txt").at(0);
  const std::string once = Seed(seed);
  EXPECT_EQ(Seed(seed), once);
  EXPECT_EQ(bob.ViewIds(), "3,8");
  for (const std::string& part : expected) EXPECT_NE(once.find(part), std::string::npos) << once;
  EXPECT_EQ(ann.AddView("X", -1, kAnn), 9);

  ann.Put("V0/Views/3", ViewBody("renamed", 5, kAnn));
  ann.Delete("V0/Views/8");
  EXPECT_NE(Seed(seed).find("renamed"), std::string::npos);
  EXPECT_EQ(ann.ViewIds(), "3,9");
}

TEST_F(StoreTest, ASeedThatChangedIsAppliedByIdAndTellsThoseConcerned) {
  const auto seed = [](const char* user, const char* sharedWith) {
    return std::string(R"({"Views":[{"ID":3,"Name":"V","UserID":)") + user + R"(,"SharedWith":[)" + sharedWith + "]}]}";
  };
  Seed(seed("1", "2"));
  EXPECT_EQ(bob.ViewIds(), "3");
  Seed(seed("1", "3"));
  EXPECT_EQ(bob.ViewIds(), "");
  Seed(seed("3", ""));
  Seed(seed("-1", ""));
  Seed(seed("1", "3,2"));
  EXPECT_EQ(bob.Listen(0).NextBriefs(4), "Views +3; Views -3; Views +3; Views *3");
  EXPECT_EQ(cid.Listen(0).NextBriefs(3), "Views +3; Views *3; Views *3");
  EXPECT_EQ(ann.Listen(0).NextBriefs(4), "Views +3; Views *3; Views -3; Views +3");
}

TEST_F(StoreTest, WhatHasNoPlaceStandsBehindTheOthersAndNotBeforeTheFirst) {
  Seed(R"({"Views":[{"ID":1,"Name":"a","UserID":1,"SequenceIndex":-5},{"ID":2,"Name":"b","UserID":2,"SequenceIndex":-5},
                    {"ID":3,"Name":"c","UserID":2},{"ID":4,"Name":"d","UserID":2}]})");
  const auto place = [](const Client& client, int32_t id) { return client.Show("View", id, {"SequenceIndex"}); };
  EXPECT_EQ(place(ann, ann.AddView("V", -1, kAnn)), "1");
  EXPECT_EQ(place(bob, 3) + " " + place(bob, 4), "1 2");
}

TEST_F(StoreTest, ASeedThatDoesNotFitIsRefusedWholeWithOneLine) {
  ann.AddGroup("kept", -1, kAnn);
  for (const auto& [seed, why] : testing_support::Cases(TABLES "Seeds.txt")) {
    EXPECT_EQ(WhySeedFails(seed, File()), why.at(0)) << seed;
  }
  EXPECT_EQ(WhySeedFails("", File()), "cannot read seed " + Path("seed.json"));
  Restart(Options());
  EXPECT_EQ(ann.ViewIds(), "");
  EXPECT_EQ(ann.GroupIds(), "1");
}

TEST_F(StoreTest, LoggingInTakesTheRightPasswordAndShowsWhoIsOnline) {
  m_server.reset();
  ViewServerOptions options = Options();
  options.dataFile = Path("fresh.db");
  ViewServer fresh(options);
  const auto password = fresh.TakeFirstPassword();
  ASSERT_TRUE(password);
  EXPECT_FALSE(fresh.TakeFirstPassword()) << "given once";
  std::string error;
  for (const auto& [name, given] : {std::pair("admin", "x"), {"dora", ""}, {"", "x"}, {"bad\xff", "x"}}) {
    EXPECT_FALSE(fresh.AddUser(name, given, error)) << name;
  }
  EXPECT_FALSE(fresh.SetPassword("nobody", "x", error));
  EXPECT_TRUE(fresh.AddUser("dora", "d", error)) << error;
  EXPECT_FALSE(fresh.OpenLocalSession("nobody"));
  fresh.Start();
  for (const char* file : {"fresh.db", "fresh.db-wal", "fresh.db-shm", "fresh.db.lock"}) {
    EXPECT_EQ(std::filesystem::status(Path(file)).permissions(), std::filesystem::perms(0600)) << file;
  }
  const Client stranger(fresh.Port(), "");
  EXPECT_EQ(stranger.LogIn("admin", "wrong").Outcome(), "101/1 401");
  EXPECT_EQ(stranger.Post("V0/Sessions", R"({"Session":{"UserName":"admin"}})").Outcome(), "100/6 400");

  const Answer answer = stranger.LogIn("admin", *password);
  ASSERT_EQ(answer.Outcome(), "0/0 200");
  EXPECT_STREQ(answer.Data()["Session"]["UserName"].GetString(), "admin");
  const Client admin(fresh.Port(), answer.Token());
  EXPECT_EQ(admin.Get("V0/Users").DataText(),
            R"({"UserList":{"User":[{"ID":1,"Name":"admin","Online":1,"PTZControlPermission":0},)"
            R"({"ID":2,"Name":"dora","Online":0,"PTZControlPermission":0}]}})");

  EXPECT_TRUE(fresh.SetPassword("admin", "new", error)) << error;
  EXPECT_EQ(admin.Get("V0/Users").Outcome(), "101/2 401") << "a new password ends the old sessions";
  EXPECT_EQ(stranger.LogIn("admin", "new").Error(), "0/0");
}

TEST(Sessions, EndTwelveHoursAfterTheirLastUse) {
  InitSecrets();
  Database database(":memory:");
  int64_t now = 1000000;
  Accounts accounts(database, [&now] { return now; });
  accounts.AddUser(1, "ann", "hash", 0);
  const std::string token = accounts.OpenSession(1, "c");
  const auto write = [&accounts] {
    const Accounts::Uses uses = accounts.Unwritten();
    accounts.Write(uses);
    accounts.Forget(uses);
    return uses.size();
  };
  for (int i = 0; i < 3; ++i) {
    now += kSessionSeconds;
    ASSERT_TRUE(accounts.Authenticate(token)) << "a use prolongs it";
  }
  database.Handle().exec("PRAGMA query_only=1");
  now += kSessionSeconds;
  EXPECT_TRUE(accounts.Authenticate(token)) << "a store that cannot be written is still read";
  database.Handle().exec("PRAGMA query_only=0");
  EXPECT_TRUE(accounts.Authenticate(token));
  for (const char* of : {"of what is not written yet", "of what is written"}) {
    now += kOnlineSeconds;
    EXPECT_TRUE(accounts.Users()[0].online) << of;
    now += 1;
    EXPECT_FALSE(accounts.Users()[0].online) << of;
    now -= kOnlineSeconds + 1;
    write();
  }
  now += 30;
  EXPECT_TRUE(accounts.Authenticate(token));
  EXPECT_EQ(write(), 0u) << "a use so soon after the last one";
  now += 1;
  EXPECT_TRUE(accounts.Authenticate(token));
  EXPECT_EQ(write(), 1u);
  EXPECT_EQ(write(), 0u) << "once";
  now += kSessionSeconds;
  EXPECT_TRUE(accounts.Authenticate(token)) << "from the last use that was written";
  EXPECT_FALSE(accounts.Authenticate(token + "x"));
  now += kSessionSeconds;
  write();
  accounts.OpenSession(1, "c");
  EXPECT_TRUE(accounts.Authenticate(token)) << "a log-in drops those alone that are over";
  now += kSessionSeconds + 1;
  EXPECT_FALSE(accounts.Authenticate(token));
  now -= kSessionSeconds;
  EXPECT_FALSE(accounts.Authenticate(token)) << "over is over";
  write();
  Accounts others(database, [&now] { return now; });
  EXPECT_FALSE(others.Authenticate(token)) << "and in the store, too";
}

TEST(LoginGuard, AnswersFailuresLaterAndLaterUntilTheRightPassword) {
  using std::chrono::milliseconds;
  const std::string here = "here";
  LoginGuard guard;
  LoginGuard::Time now{};
  now += std::chrono::hours(1);
  const int expected[] = {0, 0, 0, 250, 500, 1000, 2000, 4000, 8000, 8000};
  for (int ms : expected) EXPECT_EQ(guard.Failed("ann", here, now), milliseconds(ms));
  EXPECT_EQ(guard.Failed("bob", here, now), milliseconds(0));
  EXPECT_FALSE(guard.Admits("ann", here, now)) << "seven answers are due";
  EXPECT_TRUE(guard.Admits("ann", "elsewhere", now));
  EXPECT_TRUE(guard.Admits("bob", here, now));
  EXPECT_FALSE(guard.Admits("ann", here, now + milliseconds(3999))) << "three are due still";
  EXPECT_TRUE(guard.Admits("ann", here, now + milliseconds(4000)));
  for (int i = 0; i < 9998; ++i) guard.Failed("earlier " + std::to_string(i), here, now - std::chrono::minutes(1));
  for (int i = 0; i < 3; ++i) guard.Failed("later " + std::to_string(i), here, now);
  EXPECT_EQ(guard.Failed("ann", here, now), milliseconds(8000)) << "the oldest make room";
  now += std::chrono::minutes(15);
  EXPECT_EQ(guard.Failed("ann", here, now), milliseconds(8000));
  now += std::chrono::minutes(15) + milliseconds(1);
  EXPECT_EQ(guard.Failed("ann", here, now), milliseconds(0)) << "forgotten after a while";
  for (int i = 0; i < 5; ++i) guard.Failed("ann", here, now);
  guard.Succeeded("ann", here, now);
  EXPECT_EQ(guard.Failed("ann", here, now), milliseconds(0));
}

TEST(LoginGuard, AnAddressWhereManyFailedWaitsButForThoseWhoGotInThere) {
  using std::chrono::seconds;
  LoginGuard guard;
  LoginGuard::Time now{};
  guard.Succeeded("ann", "here", now);
  for (int i = 0; i < 100; ++i) guard.Failed("stranger " + std::to_string(i), "here", now);
  EXPECT_EQ(guard.WaitAt("bob", "here", now), seconds(0));
  guard.Failed("one more", "here", now);
  EXPECT_EQ(guard.WaitAt("bob", "here", now), seconds(1));
  EXPECT_EQ(guard.WaitAt("bob", "elsewhere", now), seconds(0));
  EXPECT_EQ(guard.WaitAt("ann", "here", now), seconds(0));
  EXPECT_EQ(guard.WaitAt("bob", "here", now + seconds(1)), seconds(0)) << "a second for each is past";
  for (int i = 0; i < 10000; ++i) guard.Succeeded("later " + std::to_string(i), "elsewhere", now + seconds(1));
  EXPECT_EQ(guard.WaitAt("ann", "here", now), seconds(1)) << "the earliest make room";
  for (int i = 0; i < 9999; ++i) guard.Failed("x", "there " + std::to_string(i), now + seconds(101));
  EXPECT_EQ(guard.WaitAt("bob", "here", now), seconds(1));
  guard.Failed("x", "one more", now + seconds(101));
  EXPECT_EQ(guard.WaitAt("bob", "here", now), seconds(0)) << "of addresses, too";
}

// As behind a proxy that nobody has named.
TEST(LoginGuard, EightWhoKeepFailingAtAnAddressLeaveItOpenAndNineCloseItWithinHalfAnHour) {
  for (const auto& [clients, isOpen] : {std::pair<int, bool>{8, true}, {9, false}}) {
    LoginGuard guard;
    LoginGuard::Time now{};
    for (const auto end = now + std::chrono::minutes(30); now < end; now += std::chrono::seconds(8)) {
      for (int i = 0; i < clients; ++i) guard.Failed("ann", "proxy", now);
    }
    EXPECT_EQ(guard.WaitAt("bob", "proxy", now) == std::chrono::seconds(0), isOpen) << clients;
  }
}

}  // namespace
}  // namespace server::test
