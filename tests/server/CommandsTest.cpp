// SPDX-License-Identifier: Apache-2.0
// What an operator does with a store: users, copies, seeds, and what happens to files that are no stores.
#include "server/commands/Commands.h"

#include <SQLiteCpp/Database.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include "../Cases.h"
#include "TestClient.h"

namespace server::test {
namespace {

class CommandsTest : public ServerTest {
 protected:
  std::string Users(const std::string& file) const {
    std::ostringstream out;
    ListUsers(file, out);
    return out.str();
  }
  // How much is wrong, and what.
  static std::string Check(const std::string& file) {
    std::ostringstream out;
    return CheckStore(file, out) == 0 ? "" : out.str();
  }
  std::string WhyNoSecondServer(const std::string& file) const {
    ViewServerOptions options = Options();
    options.dataFile = file;
    return FailureOf([&options] { ViewServer second(options); });
  }
  void Serve(const std::string& file) {
    RestartWith([&file](auto& options) { options.dataFile = file; });
  }
};

TEST_F(CommandsTest, AUserWhoIsDeletedLeavesNothingPrivateAndIsHeardToGo) {
  bob.AddView("shared", bob.AddGroup("inner", bob.AddGroup("G", -1, kBob), kBob), kBob);
  bob.AddView("secret", -1, kBob);
  bob.AddView("public", -1, kPublic);
  ann.AddView("ann's", -1, kAnn);
  bob.Share(1, "1");
  ann.Share(4, "2,3");
  bob.Put("V1/View/Default/Config", R"({"ViewRequest":{"Type":1,"ID":1}})");
  EventStream listening = bob.Listen();
  EventStream concerned = ann.Listen();
  DeleteUser(File(), "bob");
  EXPECT_EQ(bob.Get("V0/Views").Outcome(), "101/2 401");
  EXPECT_EQ(listening.Next().Brief(), "end");
  EXPECT_EQ(concerned.Next().Brief(), "Views -1");
  EXPECT_EQ(ann.ViewIds(), "3,4");
  EXPECT_EQ(cid.Show("View", 4, {"SharedUserName"}), "ann");
  EXPECT_EQ(ann.Get("V0/Users").Ids("User"), "1,3");
  EXPECT_EQ(Users(File()), "1\tann\n3\tcid\n");
  EXPECT_EQ(Check(File()), "");
  {
    SQLite::Database store(File());
    EXPECT_EQ(store.execAndGet("SELECT (SELECT count(*) FROM groups) + (SELECT count(*) FROM default_views)").getInt(),
              0);
    EXPECT_EQ(store.execAndGet("SELECT group_concat(user_id) FROM shares").getString(), "3");
  }
  EXPECT_EQ(FailureOf([this] { DeleteUser(File(), "bob"); }), "no such user");

  // Without a server the next one does it.
  ann.AddView("left behind", -1, kAnn);
  ann.AddGroup("left behind", -1, kAnn);
  m_server.reset();
  DeleteUser(File(), "ann");
  EXPECT_EQ(Check(File()), "");
  AddUser(File(), "dora", "d");
  EXPECT_EQ(Users(File()), "3\tcid\n4\tdora\n") << "no number is given again";
  Serve(File());
  EXPECT_EQ(cid.ViewIds() + cid.GroupIds(), "3");
  EXPECT_EQ(Check(File()), "");
}

TEST_F(CommandsTest, ARenamedUserStaysWhoItIs) {
  bob.AddView("V", -1, kBob);
  bob.Share(1, "1");
  EventStream stream = bob.Listen();
  RenameUser(File(), "bob", "robert");
  EXPECT_EQ(ann.Show("View", 1, {"SharedUserName"}), "robert");
  EXPECT_EQ(bob.AddView("W", -1, kBob), 2) << "the session goes on";
  EXPECT_EQ(stream.Next().Brief(), "OwnViews +2");
  for (const auto& [name, newName, why] :
       {std::tuple("robert", "ann", "there is a user of that name"),
        {"bob", "x", "no such user"},
        {"robert", "", "a name has 1 to 256 characters and no control characters"},
        {"robert", "\xff", "a name has 1 to 256 characters and no control characters"}}) {
    EXPECT_EQ(FailureOf([&, from = name, to = newName] { RenameUser(File(), from, to); }), why);
  }
  RenameUser(File(), "robert", "robert");
  EXPECT_EQ(Users(File()), "1\tann\n2\trobert\n3\tcid\n");
}

TEST_F(CommandsTest, OnlyAddingAUserMakesAStore) {
  std::ofstream(Path("empty.db")).flush();
  std::ostringstream out;
  const std::function<void(const std::string&)> commands[] = {
      [&out](const std::string& file) { ListUsers(file, out); },
      [](const std::string& file) { SetPassword(file, "ann", "x"); },
      [](const std::string& file) { RenameUser(file, "ann", "x"); },
      [](const std::string& file) { DeleteUser(file, "ann"); },
      [&out](const std::string& file) { CheckStore(file, out); },
      [this](const std::string& file) { BackUp(file, Path("copy.db")); },
      [this](const std::string& file) { Restore(Path("target.db"), file); },
  };
  for (const std::string& file : {Path("typo.db"), Path("empty.db")}) {
    for (const auto& command : commands) {
      EXPECT_EQ(FailureOf([&] { command(file); }), "there is no store " + file);
    }
  }
  for (const char* name : {"typo.db", "copy.db", "target.db", "empty.db-wal"}) {
    EXPECT_FALSE(std::filesystem::exists(Path(name))) << name;
  }
  EXPECT_EQ(std::filesystem::file_size(Path("empty.db")), 0u);
  AddUser(Path("typo.db"), "ann", "x");
  EXPECT_EQ(Users(Path("typo.db")), "1\tann\n");
}

TEST_F(CommandsTest, AFileOfAnotherApplicationIsRefusedAndStaysAsItIs) {
  const auto make = [this](const char* name, const char* sql) {
    SQLite::Database database(Path(name), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec(sql);
  };
  make("tables", "CREATE TABLE notes (id INTEGER)");
  make("version", "CREATE TABLE users (id INTEGER); PRAGMA user_version=2");
  make("bare version", "PRAGMA user_version=2");
  make("application", "PRAGMA application_id=7");
  // As a process left it that was killed: what it wrote last stands in the log beside it.
  make("made", "PRAGMA journal_mode=WAL; CREATE TABLE notes (id INTEGER)");
  {
    SQLite::Database database(Path("made"), SQLite::OPEN_READWRITE);
    database.exec("PRAGMA wal_autocheckpoint=0; INSERT INTO notes VALUES (1)");
    for (const char* end : {"", "-wal"}) std::filesystem::copy_file(Path("made") + end, Path("log") + end);
  }
  WriteFile("text", std::string(5000, 'x'));
  std::ostringstream out;
  for (const char* name : {"tables", "version", "bare version", "application", "log", "text"}) {
    SCOPED_TRACE(name);
    const std::string file = Path(name);
    const std::string before = Bytes(file) + Bytes(file + "-wal");
    ASSERT_NE(before, "");
    const std::function<void()> uses[] = {
        [&] { Serve(file); },           [&] { ListUsers(file, out); },       [&] { AddUser(file, "ann", "x"); },
        [&] { CheckStore(file, out); }, [&] { BackUp(file, Path("copy")); }, [&] { Restore(Path("other"), file); },
    };
    for (const auto& use : uses) {
      const std::string why = FailureOf(use);
      EXPECT_NE(why.find(name == std::string("text") ? "cannot use" : "is not a store of this server"),
                std::string::npos)
          << why;
      EXPECT_EQ(Bytes(file) + Bytes(file + "-wal"), before);
    }
    EXPECT_FALSE(std::filesystem::exists(Path("copy"))) << name;
    EXPECT_FALSE(std::filesystem::exists(Path("other"))) << name;
  }
}

TEST_F(CommandsTest, OneServerAtATimeUsesAStoreByWhateverName) {
  std::filesystem::create_symlink(File(), Path("absolute"));
  std::filesystem::create_symlink("absolute", Path("relative"));
  std::filesystem::create_directory_symlink(m_folder, Path("folder"));
  for (const char* name : {"absolute", "relative", "folder/site.db", "./relative"}) {
    EXPECT_EQ(WhyNoSecondServer(Path(name)), "another server uses " + Path(name));
  }
  std::filesystem::create_symlink("to be made", Path("dangling"));
  Serve(Path("to be made"));
  EXPECT_NE(WhyNoSecondServer(Path("dangling")), "");
}

TEST_F(CommandsTest, ABackupTakenWhileTheServerServesIsWholeAndCanBeRestored) {
  std::atomic<bool> done{false};
  std::atomic<int64_t> answered{0};
  std::thread editor([&] {
    for (int i = 0; !done || i < 5; ++i) {
      ann.AddView("V", -1, kPublic, Ballast(20000));
      answered = ann.Sequence();
    }
  });
  while (answered < 5) std::this_thread::yield();
  const int64_t least = answered;
  BackUp(File(), Path("copy.db"));
  done = true;
  editor.join();
  EXPECT_EQ(Check(Path("copy.db")), "");
  EXPECT_EQ(std::filesystem::status(Path("copy.db")).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(FailureOf([this] { BackUp(File(), Path("copy.db")); }), Path("copy.db") + " is there already");
  EXPECT_EQ(FailureOf([this] { Restore(File(), Path("copy.db")); }), "another server uses " + File());
  const std::string listed = ann.ViewIds();

  m_server.reset();
  std::filesystem::create_symlink(File(), Path("link"));
  EXPECT_EQ(Restore(Path("link"), Path("copy.db")), File() + ".replaced");
  EXPECT_EQ(Restore(File(), Path("copy.db")), File() + ".replaced-2");
  EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
  Serve(File());
  EXPECT_GE(ann.Sequence(), least);
  EXPECT_EQ(listed.find(ann.ViewIds()), 0u);
  Serve(File() + ".replaced");
  EXPECT_EQ(ann.ViewIds(), listed) << "what it replaced is kept whole";
  EXPECT_EQ(Restore(Path("fresh.db"), Path("copy.db")), "");
  EXPECT_EQ(Check(Path("fresh.db")), "");
}

TEST_F(CommandsTest, AFailedRestoreLeavesTheStore) {
  ann.AddView("V", -1, kAnn, Ballast(20000));
  m_server.reset();
  BackUp(File(), Path("copy.db"));
  std::string damaged = Bytes(Path("copy.db"));
  damaged.replace(damaged.size() / 2, 8192, std::string(8192, '\x01'));
  WriteFile("damaged.db", damaged);
  BackUp(File(), Path("newer.db"));
  SQLite::Database(Path("newer.db"), SQLite::OPEN_READWRITE).exec("PRAGMA user_version=1000");
  EXPECT_EQ(FailureOf([&] { Restore(File(), Path("newer.db")); }), Path("newer.db") + " was written by a newer server");
  const std::string before = Bytes(File());
  for (const std::string& file : {Path("damaged.db"), Path("newer.db"), Path("none.db"), File()}) {
    const std::string why = FailureOf([&] { Restore(File(), file); });
    EXPECT_EQ(why.find('\n'), std::string::npos);
    EXPECT_NE(why, "") << file;
    EXPECT_EQ(Bytes(File()), before);
  }
  // What it replaces may be anything: it is put aside as it is, its log with it.
  WriteFile("site.db", "no store at all");
  WriteFile("site.db-wal", "nor a log");
  EXPECT_EQ(Restore(File(), Path("copy.db")), File() + ".replaced");
  EXPECT_EQ(Bytes(File() + ".replaced") + Bytes(File() + ".replaced-wal"), "no store at allnor a log");
  Serve(File());
  EXPECT_EQ(ann.ViewIds(), "1");
}

TEST_F(CommandsTest, ASeedIsAppliedWithoutServing) {
  const std::string seed = WriteFile("seed.json", R"({"Views":[{"ID":7,"Name":"V"}]})");
  EXPECT_EQ(FailureOf([&] { ApplySeed(File(), seed, {}); }), "another server uses " + File());
  m_server.reset();
  ApplySeed(File(), seed, {});
  EXPECT_NE(FailureOf([&] { ApplySeed(Path("none.db"), WriteFile("bad.json", "{"), {}); }), "");
  EXPECT_FALSE(std::filesystem::exists(Path("none.db")));
  Serve(File());
  EXPECT_EQ(ann.ViewIds(), "7");
}

TEST_F(CommandsTest, ASeedLeavesIdsForOthersAndTakesNobodysName) {
  m_server.reset();
  ApplySeed(File(), WriteFile("seed.json", R"({"Views":[{"ID":2147483646,"Name":"V"}]})"), {});
  Serve(File());
  EXPECT_EQ(ann.Post("V0/Views", ViewBody("W", -1, kAnn)).Outcome(), "0/0 200");
  EXPECT_EQ(ann.Post("V0/Views", ViewBody("X", -1, kAnn)).Outcome(), "100/8 500") << "none is left";
  EXPECT_EQ(ann.AddGroup("G", -1, kAnn), 1) << "but for others";
  Serve(File());
  EXPECT_EQ(ann.ViewIds(), "2147483646,2147483647") << "what was answered is there";

  m_server.reset();
  AddUser(Path("own.db"), "admin", "a");
  const std::string seed = WriteFile("seed.json", R"({"Users":[{"ID":1,"Name":"maria","Password":"m"}]})");
  const std::string before = Users(Path("own.db"));
  EXPECT_EQ(FailureOf([&] { ApplySeed(Path("own.db"), seed, {}); }),
            "seed: user 1 is admin here, and not maria: it came by no seed");
  EXPECT_EQ(Users(Path("own.db")), before);
  ApplySeed(Path("own.db"), WriteFile("same.json", R"({"Users":[{"ID":1,"Name":"admin","Password":"m"}]})"), {});
  ApplySeed(Path("own.db"), seed, {});
  EXPECT_EQ(Users(Path("own.db")), "1\tmaria\n") << "a seed's own user may get another name";
  RenameUser(Path("own.db"), "maria", "mary");
  ApplySeed(Path("own.db"), seed, {});
  EXPECT_EQ(Users(Path("own.db")), "1\tmary\n") << "what was seeded once is the operator's";
}

}  // namespace
}  // namespace server::test
