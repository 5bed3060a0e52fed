// SPDX-License-Identifier: Apache-2.0
// What takes a process of its own: the program's status and words, and several that make one store.
#include <SQLiteCpp/Database.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <sstream>

#include "../Cases.h"
#include "TestClient.h"
#include "base/system/Files.h"
#include "server/commands/Commands.h"
#include "server/login/Accounts.h"
#include "server/store/Database.h"
#include "server/store/FileLock.h"

namespace server::test {
namespace {

class ProgramTest : public ServerTest {
 protected:
  // The status of a line of the shell, which has `viewserver` and the test's folder. What is said stands in "out".
  int Run(const std::string& line) const {
    const std::string setting =
        "cd '" + Path("") + "'; export VIEWSERVER_PASSWORD=x; viewserver() { '" VIEWSERVER_FILE "' \"$@\"; }; ";
    const int status = std::system((setting + "{ " + line + "; } >out 2>&1 </dev/null").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  // Each line of the running test's table has the status that stands there, and says what stands there, if anything.
  void RunAll() const {
    for (const auto& [line, expected] : testing_support::Cases(TABLES "Program.txt")) {
      EXPECT_EQ(std::to_string(Run(line)), expected.at(0)) << line << ": " << Bytes(Path("out"));
      std::string text;
      for (size_t i = 1; i < expected.size(); ++i) text += expected[i] + "\n";
      EXPECT_EQ(text.empty() ? "" : Bytes(Path("out")), text) << line;
    }
  }
};

// Processes of their own: SQLite tells the threads of one apart by other means.
TEST_F(ProgramTest, SeveralMayMakeAStoreAtOnce) {
  m_server.reset();  // no thread is lost in the children
  for (int round = 0; round < 25; ++round) {
    const std::string file = Path("new" + std::to_string(round));
    const auto start = std::chrono::steady_clock::now() + std::chrono::milliseconds(10);
    std::vector<pid_t> makers;
    for (int i = 0; i < 4; ++i) {
      makers.push_back(fork());
      if (makers.back() != 0) continue;
      while (std::chrono::steady_clock::now() < start) {
      }
      const std::string failure = FailureOf([&] {
        Database database(file, Database::Use::kAccounts);
        Transaction transaction(database);
        Accounts(database, SecondsNow).AddUser(0, "user " + std::to_string(i), "-", 0);
        transaction.Commit();
      });
      if (!failure.empty()) std::fprintf(stderr, "%s\n", failure.c_str());
      _exit(failure.empty() ? 0 : 1);
    }
    for (const pid_t maker : makers) {
      int status = -1;
      waitpid(maker, &status, 0);
      EXPECT_EQ(status, 0) << round;
    }
    std::ostringstream users;
    ListUsers(file, users);
    ASSERT_EQ(std::ranges::count(users.str(), '\n'), 4) << round;
  }
}

TEST_F(ProgramTest, TheProgramSaysForHowManyConnectionsDescriptorsSuffice) {
  RunAll();
}

TEST_F(ProgramTest, TheProgramsStatusTells) {
  m_server.reset();
  RunAll();
  SQLite::Database(File(), SQLite::OPEN_READWRITE).exec("UPDATE views SET name = ''");
  EXPECT_EQ(Run("viewserver --data site.db check"), 1);
}

TEST_F(ProgramTest, WhatASuperuserMakesBesideAStoreIsItsOwners) {
  m_server.reset();
  if (geteuid() != 0 || chown(File().c_str(), 1, 2) != 0) GTEST_SKIP() << "nobody else may give files away";
  BackUp(File(), Path("copy.db"));
  EXPECT_EQ(base::GiveToOwnerOf(File(), Path("absent")).value(), ENOENT);
  EXPECT_FALSE(base::GiveToOwnerOf(Path("absent"), Path("copy.db"))) << "there is nobody to give it to";
  std::filesystem::remove(File() + ".lock");
  Restore(File(), Path("copy.db"));
  for (const std::string& file : {File(), File() + ".lock"}) {
    struct stat made {};
    EXPECT_EQ(stat(file.c_str(), &made), 0) << file;
    EXPECT_TRUE(made.st_uid == 1 && made.st_gid == 2) << file;
  }
}

// The descriptor of what is opened first is 0 then.
TEST_F(ProgramTest, AStoreIsMadeAndGivenBackWhereStandardInputIsClosedToo) {
  m_server.reset();  // it opens nothing meanwhile
  const FileLock held(Path("held.db"));
  const int input = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(FailureOf([this] { FileLock lock(Path("other.db")); }), "");
  EXPECT_EQ(FailureOf([this] { FileLock lock(Path("held.db")); }), "another server uses " + Path("held.db"));
  EXPECT_FALSE(base::MakePrivateFile(Path("new.db")));
  base::PutInPlace(Path("new.db"), Path("newer.db"));
  { const base::AppendedFile own(Path("log")), usual("-"); }
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "what was opened is closed again";
  EXPECT_NE(fcntl(STDERR_FILENO, F_GETFD), -1) << "and what was not stays open";
  dup2(input, STDIN_FILENO);
  close(input);
}

}  // namespace
}  // namespace server::test
