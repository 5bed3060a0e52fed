// SPDX-License-Identifier: Apache-2.0
// Stores that a server of version 1 has written: what becomes of them, and of the copy that is kept.
#include <SQLiteCpp/SQLiteCpp.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <regex>
#include <set>
#include <thread>

#include "../Cases.h"
#include "TestClient.h"
#include "server/login/Accounts.h"
#include "server/store/Database.h"

namespace server::test {
namespace {

// Everything that a store's tables hold, and what they look like.
std::string DumpOf(const std::string& file) {
  SQLite::Database database(file, SQLite::OPEN_READWRITE);
  std::string dump = database.execAndGet("PRAGMA integrity_check").getString() + " version " +
                     database.execAndGet("PRAGMA user_version").getString() + "\n";
  SQLite::Statement schema(database, "SELECT type, name, sql FROM sqlite_master ORDER BY type, name");
  while (schema.executeStep()) {
    const std::string name = schema.getColumn(1);
    dump += name + ": " + schema.getColumn(2).getString() + "\n";
    if (schema.getColumn(0).getString() != "table") continue;
    SQLite::Statement rows(database, "SELECT * FROM " + name + " ORDER BY 1, 2");
    while (rows.executeStep()) {
      for (int i = 0; i < rows.getColumnCount(); ++i) dump += rows.getColumn(i).getString() + "|";
      dump += "\n";
    }
  }
  return dump;
}

std::string SchemaOf(const std::string& file) {
  SQLite::Database database(file);
  const std::string sql =
      database.execAndGet("SELECT group_concat(sql) FROM (SELECT sql FROM sqlite_master ORDER BY name)");
  return std::regex_replace(sql, std::regex(R"(\s+)"), " ");
}

class UpgradeTest : public ServerTest {
 protected:
  UpgradeTest() {
    m_server.reset();
    std::filesystem::remove_all(m_folder);
    std::filesystem::create_directory(m_folder);
  }

  // A store of version 1 as a process left it that was killed: its last rows are in the WAL.
  void MakeOldStore(const std::string& more = "") {
    const std::string made = File() + ".made";
    SQLite::Database database(made, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("PRAGMA journal_mode=WAL");
    database.exec(Bytes(TABLES "Version1Schema.sql"));
    database.exec("PRAGMA wal_checkpoint(TRUNCATE)");
    database.exec("PRAGMA wal_autocheckpoint=0");
    database.exec(Bytes(TABLES "Version1Rows.sql"));
    if (!more.empty()) database.exec(more);
    for (const std::string& name : {File() + ".before", File()}) {
      std::filesystem::copy_file(made, name);
      std::filesystem::copy_file(made + "-wal", name + "-wal");
    }
    m_dump = DumpOf(File() + ".before");
    ASSERT_FALSE(std::filesystem::exists(File() + ".before-wal")) << "the dump's is closed";
    std::filesystem::remove(File() + ".before");
    chmod(File().c_str(), 0644);
    for (const char* end : {"", "-wal", "-shm"}) std::filesystem::remove(made + end);
  }

  // The line that is told when the store is opened; it is closed again.
  std::string Open() const {
    return ErrorsOf([this] { Database opened(File()); });
  }
  std::string WhyNotOpened() const {
    return FailureOf([this] { Database opened(File()); });
  }
  std::string Told(const std::string& copy) const {
    return "viewserver: " + File() + " is now a store of version 3; as it was it stands in " + File() + copy + "\n";
  }
  // What stands in the folder, without the store's name.
  std::set<std::string> Files() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
      names.insert(entry.path().filename().string().substr(std::string("site.db").size()));
    }
    return names;
  }

  std::string m_dump;  // of the old store
};

TEST_F(UpgradeTest, ListsAreTheOldOnesWithTheNumberOfEachObjectsLastKeptChange) {
  MakeOldStore();
  Restart(Options());
  EXPECT_EQ(ann.Sequence(), 46);
  Play(TABLES "Upgraded.txt");

  { Database made(Path("fresh.db")); }
  EXPECT_EQ(SchemaOf(File()), SchemaOf(Path("fresh.db")));
}

TEST_F(UpgradeTest, WhereNoChangeIsKeptObjectsHaveTheNumberOfTheLastOne) {
  MakeOldStore("DELETE FROM changes");
  Restart(Options());
  EXPECT_EQ(ann.Show("View", 11, {"ChangeNumber"}) + " " + ann.Show("ViewGroup", 2, {"ChangeNumber"}), "46 46");
  EXPECT_EQ(ann.Sequence(), 46);
}

TEST_F(UpgradeTest, AClientThatGoesOnHearsTheOldEventsWithTheirNumbers) {
  MakeOldStore();
  Restart(Options());
  EXPECT_EQ(ann.Listen(39).Status(), 410);
  for (const auto& [asked, expected] : testing_support::Cases(TABLES "Upgraded.txt")) {
    EventStream stream = (asked.starts_with("ann") ? ann : bob).Listen(std::stoll(asked.substr(4)));
    for (const std::string& told : expected) {
      const Event event = stream.Next();
      EXPECT_EQ(event.name + " " + event.text, told) << asked;
    }
  }
}

TEST_F(UpgradeTest, TheOldStoreIsKeptBesideIt) {
  MakeOldStore();
  EXPECT_EQ(Open(), Told(".v1"));
  EXPECT_EQ(Files(), (std::set<std::string>{"", ".v1"}));
  EXPECT_EQ(std::filesystem::status(File() + ".v1").permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(DumpOf(File() + ".v1"), m_dump);
  EXPECT_NE(DumpOf(File()), m_dump);
  EXPECT_EQ(Open(), "") << "nothing is left to do";
  EXPECT_EQ(Files(), (std::set<std::string>{"", ".v1"}));
  std::filesystem::rename(File() + ".v1", File());
  EXPECT_EQ(Open(), Told(".v1")) << "and it can be used again";
}

TEST_F(UpgradeTest, TheCopyTakesTheFirstFreeName) {
  MakeOldStore();
  WriteFile("site.db.v1", "mine");
  std::filesystem::create_directory(File() + ".v1-2");
  std::filesystem::create_symlink("nowhere", File() + ".v1-3");
  WriteFile("site.db.v1-5", "mine");
  WriteFile("site.db.v1-part", "what a process left that was killed");
  WriteFile("site.db.v1-part-journal", "and this");
  EXPECT_EQ(Open(), Told(".v1-4"));
  EXPECT_EQ(DumpOf(File() + ".v1-4"), m_dump);
  EXPECT_EQ(Files(), (std::set<std::string>{"", ".v1", ".v1-2", ".v1-3", ".v1-4", ".v1-5"}));
  EXPECT_EQ(std::filesystem::file_size(File() + ".v1"), 4u);
}

TEST_F(UpgradeTest, DamageKeepsNoOldStoreFromBeingUpgradedAndServed) {
  MakeOldStore(
      "UPDATE views SET name = '' WHERE id = 2; UPDATE views SET group_id = 77 WHERE id = 10; "
      "UPDATE changes SET head = x'FF', after = 7 WHERE number = 42");
  Restart(Options());
  EXPECT_EQ(ann.ViewIds() + " " + ann.Show("View", 10, {"ViewGroupID"}), "10,11 -1");
  EXPECT_EQ(ann.Listen(41).NextBriefs(2), "Views +2; Views -13");
}

TEST_F(UpgradeTest, AStoreOfVersion2IsUpgradedToo) {
  MakeOldStore();
  Open();
  std::filesystem::remove(File() + ".v1");
  const std::string schema = SchemaOf(File());
  SQLite::Database(File(), SQLite::OPEN_READWRITE)
      .exec("ALTER TABLE changes DROP COLUMN bytes; DROP TABLE epochs; PRAGMA user_version=2");
  const std::string dump = DumpOf(File());
  EXPECT_EQ(Open(), Told(".v2"));
  EXPECT_EQ(DumpOf(File() + ".v2"), dump);
  EXPECT_EQ(SchemaOf(File()), schema);
  // Of each change what is said of it, and the document where it is the first to have it.
  const std::string differences =
      "SELECT group_concat(bytes - length(before) - length(after) - length(head) - length(shared_head) - "
      "iif(number = 42, (SELECT length(CAST(text AS BLOB)) FROM documents WHERE id = 2), 0)) FROM changes";
  EXPECT_EQ(SQLite::Database(File()).execAndGet(differences).getString(), "0,0,0,0,0,0");
  Restart(Options());
  EXPECT_EQ(ann.Listen(45).Next().number, 46);
}

TEST_F(UpgradeTest, OfTwoThatOpenItAtOnceOneUpgradesIt) {
  for (int i = 0; i < 10; ++i) {
    MakeOldStore();
    std::string outcomes[2];
    const std::string told = ErrorsOf([&] {
      std::thread other([&] { outcomes[0] = WhyNotOpened(); });
      outcomes[1] = WhyNotOpened();
      other.join();
    });
    EXPECT_EQ(outcomes[0] + outcomes[1], "");
    EXPECT_EQ(told, Told(".v1"));
    // Where both close at once, neither is the last to have it, and the WAL stays for whoever opens it next.
    EXPECT_EQ(Open(), "");
    ASSERT_EQ(Files(), (std::set<std::string>{"", ".v1"}));
    for (const std::string& name : Files()) std::filesystem::remove(File() + name);
  }
}

TEST_F(UpgradeTest, WhoOnlyManagesUsersLeavesAnOldStoreAsItIs) {
  MakeOldStore();
  {
    Database old(File(), Database::Use::kAccounts);
    Accounts accounts(old, SecondsNow);
    EXPECT_EQ(accounts.Users().size(), 3u);
    EXPECT_TRUE(accounts.AddUser(0, "dora", "-", 0));
    EXPECT_EQ(Files().count(".v1"), 0u);
  }
  EXPECT_NE(DumpOf(File()).find("ok version 1\n"), std::string::npos);
  Restart(Options());
  EXPECT_EQ(ann.Get("V0/Users").Ids("User"), "1,2,3,4");
}

// While it lives no file may grow beyond that size.
class FullDisk {
 public:
  explicit FullDisk(uintmax_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit limit{bytes, m_before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_handler);
  }

 private:
  void (*m_handler)(int);
  rlimit m_before{};
};

TEST_F(UpgradeTest, AFailureLeavesTheOldStoreAndNoCopy) {
  // Enough that neither the copy nor what is written to the store fits where it is cut.
  const std::string many = R"sql(
    WITH RECURSIVE n(value) AS (SELECT 47 UNION ALL SELECT value + 1 FROM n WHERE value < 2000)
    INSERT INTO changes SELECT value, 2, 11, 0, 1, '1', '1', '{"ID":11,"Name":"' || hex(zeroblob(200)) || '"', '', 2
    FROM n)sql";
  const struct {
    const char* name;
    std::string rows;
    double space;  // for each file, in sizes of the store
    bool isInTheWay;
    const char* why;
  } cases[] = {
      {"a directory in the copy's way", "", 100, true, "File exists"},
      {"no space for the copy", many, 0.1, false, "disk I/O error"},
      {"no space for what follows it", many, 1, false, "disk I/O error"},
      {"a store of a newer server", "PRAGMA user_version=4", 100, false, "was written by a newer server"},
      {"a store that has such a column already", "ALTER TABLE views ADD COLUMN change_number INTEGER", 100, false,
       "duplicate column name"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    MakeOldStore(c.rows);
    DumpOf(File());  // empties the WAL
    if (c.isInTheWay) std::filesystem::create_directory(File() + ".v1-part");
    std::string why;
    {
      const FullDisk disk(static_cast<uintmax_t>(c.space * static_cast<double>(std::filesystem::file_size(File()))));
      why = WhyNotOpened();
    }
    if (c.isInTheWay) std::filesystem::remove(File() + ".v1-part");
    EXPECT_NE(why.find(c.why), std::string::npos) << why;
    EXPECT_EQ(why.find('\n'), std::string::npos) << why;
    EXPECT_EQ(DumpOf(File()), m_dump);
    EXPECT_EQ(Files(), (std::set<std::string>{""}));
    std::filesystem::remove(File());
  }
}

}  // namespace
}  // namespace server::test
