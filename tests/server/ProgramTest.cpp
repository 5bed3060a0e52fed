// SPDX-License-Identifier: Apache-2.0
// What takes a process of its own: the program's status and words, and several that make one store.
#include <SQLiteCpp/Database.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "../Cases.h"
#include "TestClient.h"
#include "server/commands/Commands.h"
#include "server/login/Accounts.h"
#include "server/store/Database.h"

namespace server::test {
namespace {

using ProgramTest = ServerTest;

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

// Which it cannot do much with: the store is nowhere.
TEST_F(ProgramTest, TheProgramSaysForHowManyConnectionsDescriptorsSuffice) {
  const std::pair<const char*, const char*> cases[] = {
      {"300", ""},
      {"299", "viewserver: 299 file descriptors suffice for 199 connections only\n"},
      {"150", "viewserver: 150 file descriptors suffice for 100 connections only\n"}};
  for (const auto& [descriptors, said] : cases) {
    const std::string program = "'" VIEWSERVER_FILE "' --max-connections 200 --data /nowhere/at/all";
    std::system(("ulimit -n " + std::string(descriptors) + "; " + program + " 2>'" + Path("out") + "'").c_str());
    EXPECT_EQ(Bytes(Path("out")), said + std::string("viewserver: cannot write beside /nowhere/at/all\n"));
  }
}

TEST_F(ProgramTest, TheProgramsStatusTells) {
  m_server.reset();
  const auto run = [this](const std::string& arguments) {
    const int status = std::system(
        ("VIEWSERVER_PASSWORD=x '" VIEWSERVER_FILE "' " + arguments + " >'" + Path("out") + "' 2>&1 </dev/null")
            .c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  };
  const std::string data = "--data '" + File() + "' ";
  EXPECT_EQ(run("--version"), 0);
  EXPECT_EQ(Bytes(Path("out")).find("viewserver "), 0u);
  for (const auto& [arguments, lines] : testing_support::Cases(TABLES "Help.txt")) {
    EXPECT_EQ(run(arguments), 0);
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    const std::string help = Bytes(Path("out"));
    EXPECT_EQ(help.substr(std::min(help.find("Options:"), help.size())), text + "\n") << arguments;
  }
  EXPECT_EQ(run("check"), 2) << "no store said";
  for (const char* listen : {":80", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:8x", "127.0.0.1:-1"}) {
    EXPECT_EQ(run(data + "--listen " + listen), 2) << listen;
  }
  EXPECT_EQ(run("--data '" + Path("typo") + "' user list"), 1);
  EXPECT_FALSE(std::filesystem::exists(Path("typo")));
  EXPECT_EQ(run(data + "check"), 0);
  EXPECT_EQ(Bytes(Path("out")), "0 groups, 0 views, 0 changes, 0 things wrong\n");
  EXPECT_EQ(run(data + "user rename bob robert"), 0);
  EXPECT_EQ(run(data + "user password robert"), 0);
  EXPECT_EQ(run(data + "user delete cid"), 0);
  EXPECT_EQ(run(data + "user list"), 0);
  EXPECT_EQ(Bytes(Path("out")), "1\tann\n2\trobert\n");
  EXPECT_EQ(run(data + "backup '" + Path("copy") + "'"), 0);
  EXPECT_EQ(run(data + "restore '" + Path("copy") + "'"), 0);
  EXPECT_EQ(run(data + "seed '" + WriteFile("seed.json", R"({"Views":[{"ID":7,"Name":"V"}]})") + "'"), 0);
  SQLite::Database(File(), SQLite::OPEN_READWRITE).exec("UPDATE views SET name = ''");
  EXPECT_EQ(run(data + "check"), 1);
  EXPECT_EQ(run(data + "user"), 2);
  EXPECT_EQ(run(data + "--seed none.json"), 1);
  EXPECT_EQ(Bytes(Path("out")).find("viewserver: applying the seed none.json\nviewserver: "), 0u);
}

}  // namespace
}  // namespace server::test
