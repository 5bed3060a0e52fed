// SPDX-License-Identifier: Apache-2.0
// Damaged stores: what is damaged is left out and said, the rest is served, and nothing is without end.
#include <SQLiteCpp/Database.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "../Cases.h"
#include "TestClient.h"
#include "server/commands/Commands.h"

namespace server::test {
namespace {

class DamageTest : public ServerTest {
 protected:
  // Groups 1 > 2 > 3 of ann's with view 1 in the last; her view 2, shared with bob; group 4 and view 3, public.
  DamageTest() {
    ann.AddGroup("one", -1, kAnn);
    ann.AddGroup("two", 1, kAnn);
    ann.AddGroup("three", 2, kAnn);
    const std::string pages = R"(,"PlanPages":[{"SpliteType":4,"PlanViewItem":[{"SequenceIndex":1,"Xtop":0.25}]}])";
    ann.AddView("inside", 3, kAnn, pages);
    ann.AddView("shared", -1, kAnn, pages);
    ann.Share(2, "2");
    ann.AddGroup("open", -1, kPublic);
    ann.AddView("public", 4, kPublic, pages);
    m_server.reset();
    std::filesystem::copy_file(File(), File() + ".sound");
  }

  void Damage(const std::string& sql) {
    m_server.reset();
    std::filesystem::remove(File());
    std::filesystem::copy_file(File() + ".sound", File());
    SQLite::Database(File(), SQLite::OPEN_READWRITE, kStoreWaitMs).exec(sql);
  }

  // What the start with the damaged store says.
  std::string Start() {
    return ErrorsOf([this] { Restart(Options()); });
  }

  // What is wrong, without the line that sums it up.
  std::string Check() {
    std::ostringstream out;
    const size_t count = CheckStore(File(), out);
    const std::string said = out.str();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), static_cast<long>(count) + 1) << said;
    return said.substr(0, said.rfind('\n', said.size() - 2) + 1);
  }

  static std::string Sees(const Client& client) { return client.GroupIds() + " " + client.ViewIds(); }

  int Count(const std::string& what) {
    return SQLite::Database(File()).execAndGet("SELECT count(*) FROM " + what).getInt();
  }
  std::string Stored(const std::string& what) {
    return SQLite::Database(File()).execAndGet("SELECT " + what).getString();
  }
};

std::string Document(const std::string& text) {
  return "UPDATE documents SET text = " + text + " WHERE id = (SELECT document_id FROM views WHERE id = 1)";
}

// Of each damage what ann sees; what bob sees; and what is said of it, some of it by `check` alone.
TEST_F(DamageTest, WhatIsDamagedIsLeftOutAndSaidAndTheRestIsServed) {
  for (const auto& [sql, expected] : testing_support::Cases(TABLES "Damages.txt")) {
    SCOPED_TRACE(sql);
    Damage(sql);
    std::string found, told;
    for (size_t i = 1; i < expected.size(); ++i) {
      const bool isOfCheck = expected[i].starts_with("(check) ");
      found += expected[i].substr(isOfCheck ? 8 : 0) + "\n";
      if (!isOfCheck) told += "viewserver: " + File() + ": " + expected[i] + "\n";
    }
    const int rows = Count("views") + Count("groups") + Count("documents");
    EXPECT_EQ(Check(), found);
    EXPECT_EQ(Start(), told);
    EXPECT_EQ(Sees(ann) + "; " + Sees(bob), expected.at(0));
    EXPECT_EQ(Count("views") + Count("groups") + Count("documents"), rows) << "kept for repair";
  }
}

TEST_F(DamageTest, OtherListsLeaveOutWhatIsDamagedToo) {
  Damage(
      "UPDATE users SET name = CAST(x'FF' AS TEXT) WHERE id = 3; INSERT INTO areas VALUES (1,'a'),(2,CAST(x'FF' AS "
      "TEXT)); INSERT INTO elements VALUES (1,1,'a',1),(2,1,CAST(x'FF' AS TEXT),1),(-5000000000,1,'b',1)");
  const std::string said = Start();
  EXPECT_EQ(ann.Told("LIST User") + " " + ann.Told("LIST Area") + " " + ann.Told("LIST Element"), "1,2 1 1");
  for (const char* line : {"user 3 is left out", "area 2 is left out", "element 2 is", "element -5000000000 is"}) {
    EXPECT_NE(said.find(line), std::string::npos) << said;
  }
}

TEST_F(DamageTest, NothingIsEndlessInACircleOfGroups) {
  Damage("UPDATE groups SET parent_id = 3 WHERE id = 1; UPDATE groups SET parent_id = 77 WHERE id = 4");
  Start();
  Play(TABLES "Damages.txt");
}

TEST_F(DamageTest, WhatIsDamagedIsNeitherOverwrittenNorItsIdGivenAgain) {
  Damage(
      "UPDATE views SET name = '' WHERE id = 3; UPDATE groups SET name = '' WHERE id = 4; DELETE FROM sqlite_sequence");
  const char* const seed =
      R"({"ViewGroups":[{"ID":4,"Name":"mine"}],"Views":[{"ID":3,"Name":"mine"},{"ID":9,"Name":"V"}]})";
  const std::string said = ErrorsOf([&] { RestartWithSeed(seed); });
  EXPECT_NE(said.find("seed: view 3 is damaged in the store and stays as it is"), std::string::npos) << said;
  EXPECT_EQ(Sees(ann), "1,2,3 1,2,9");
  EXPECT_EQ(ann.AddView("new", -1, kAnn), 10);
  EXPECT_EQ(ann.AddGroup("new", -1, kAnn), 5);
  EXPECT_EQ(Stored("name FROM views WHERE id = 3") + Stored("name FROM groups WHERE id = 4"), "");
  SQLite::Database(File(), SQLite::OPEN_READWRITE, kStoreWaitMs)
      .exec("UPDATE views SET name = 'whole again' WHERE id = 3");
  RestartWithSeed(seed);
  EXPECT_EQ(ann.Show("View", 3, {"Name"}), "mine") << "once repaired it is a seeded view like others";
}

TEST_F(DamageTest, ADamagedChangeIsHeardOfByNobodyAndTheOthersAreHeard) {
  Damage(Document("',\"PlanPages\":['") +
         "; UPDATE changes SET head = substr('{\"ID\":', 1, 6 * number - 6) WHERE number < 3");
  Start();
  EXPECT_EQ(ann.Listen(0).NextBriefs(3), "ViewGroups +3; Views +2; ViewGroups +4");
}

// Where the numbers of one history have ended must be known, or a client would go on after another's.
TEST_F(DamageTest, DamagedHistoriesAreForgottenAndNoDamageOfTheLogKeepsEditsAway) {
  const std::string first = Stored("id FROM epochs ORDER BY number DESC");
  // Of each damage the status of who goes on in the first history, and whether `check` has nothing to say of it.
  for (const auto& [sql, expected] : testing_support::Cases(TABLES "Damages.txt")) {
    SCOPED_TRACE(sql);
    Damage(sql);
    const std::string unseen = Check().empty() ? " unseen" : "";
    Start();
    EXPECT_EQ(std::to_string(ann.Listen(1, "&History=" + first).Status()) + unseen, expected.at(0));
    const std::string current = ann.Get("V0/Views").headers.at("resource-history");
    EventStream stream = ann.Listen(8, "&History=" + current);
    EXPECT_EQ(ann.AddView("new", -1, kAnn), 4);
    EXPECT_EQ(stream.NextBriefs(1), "OwnViews +4");
  }
}

TEST_F(DamageTest, ManyFindingsAreSaidInABoundedNumberOfLines) {
  Damage(
      "WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i + 1 FROM n WHERE i < 129) INSERT INTO groups "
      "(id, name, parent_id, user_id, shared_folder, sequence) SELECT i, '', -1, 1, 0, 1 FROM n");
  const std::string said = Start();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 21) << said;
  EXPECT_NE(said.find("and 10 more"), std::string::npos) << said;
}

// Bytes of the file itself: the server refuses to start with one line, or it serves lists that are whole.
TEST_F(DamageTest, WhereverBytesAreFlippedListsAreWellFormed) {
  const std::string sound = Bytes(File() + ".sound");
  std::mt19937 random(1);
  int served = 0;
  testing::internal::CaptureStderr();
  for (int round = 0; round < 60; ++round) {
    std::string damaged = sound;
    // Behind the schema, and mostly where texts are: else few of them could be opened.
    for (int flips = 0; flips < 4;) {
      char& byte = damaged[8192 + random() % (damaged.size() - 8192)];
      if (byte < ' ' && random() % 1000 != 0) continue;
      byte = static_cast<char>(byte ^ (1 << random() % 8));
      ++flips;
    }
    ViewServerOptions options = Options();
    options.dataFile = WriteFile("damaged.db", damaged);
    for (const char* end : {"-wal", "-shm"}) std::filesystem::remove(options.dataFile + end);
    const std::string why = FailureOf([&] {
      std::ostringstream checked;
      CheckStore(options.dataFile, checked);
    });
    EXPECT_EQ(why.find('\n'), std::string::npos) << why;
    const std::string failure = FailureOf([&] {
      ViewServer server(options);
      const auto session = server.OpenLocalSession("ann");
      if (!session) return;
      server.Start();
      const Client client(server.Port(), session->token);
      if (client.Get("V0/ViewGroups").status != 200) return;  // the sessions are damaged
      ++served;
      for (const char* path : {"V0/ViewGroups", "V0/Views", "V0/Users", "V0/Elements"}) {
        const Answer answer = client.Get(path);
        EXPECT_TRUE(answer.status == 500 || answer.Error() == "0/0") << round << ": " << answer.body;
      }
    });
    EXPECT_EQ(failure.find('\n'), std::string::npos) << failure;
  }
  testing::internal::GetCapturedStderr();
  EXPECT_GT(served, 10);
}

}  // namespace
}  // namespace server::test
