// SPDX-License-Identifier: Apache-2.0
// Hosts and libraries that do not fit each other, and hosts that do without what most have. This process has no
// QCoreApplication.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "../server/TestClient.h"
#include "QorviViewPlugin/Functions.h"
#include "ResourceStore/ViewGroupManager.h"
#include "host/Connection.h"
#include "host/Plugin.h"

namespace {

namespace fs = std::filesystem;

class BadHostTest : public testing::Test, protected server::test::TestFolder {
 protected:
  // What the shell says, and whether all went well.
  static bool Shell(const std::string& command, std::string& output) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(("{ " + command + "; } 2>&1; echo = $?").c_str(), "r"),
                                                     pclose);
    char piece[4096];
    while (pipe && std::fgets(piece, sizeof piece, pipe.get())) output += piece;
    return output.ends_with("= 0\n");
  }
  void Compile(const std::string& file, const std::string& source, const std::string& options) const {
    std::ofstream(Path(file + ".cpp")) << source;
    const std::string sanitize = *SANITIZE ? "-fsanitize=" SANITIZE " " : "";
    std::string output;
    EXPECT_TRUE(
        Shell(CXX_COMPILER " -w -fPIC " + sanitize + "'" + Path(file + ".cpp") + "' -o '" + Path(file) + "' " + options,
              output))
        << output;
  }
  std::string WhyNot(const std::string& file) const {
    return server::test::FailureOf([&] { const host::Plugin plugin(Path(file)); });
  }

  std::unique_ptr<host::Connection> Connect() {
    server::ViewServerOptions options;
    options.dataFile = Path("views.db");
    options.seedFile = SITE_FILE;
    return std::make_unique<host::Connection>(host::StartEmbeddedServer(options, [](const std::string&) {}), "admin");
  }
};

// Its answers with what a locale could spoil: numbers, orders of names, texts of errors.
std::string Answers(const host::Plugin& plugin) {
  std::string all;
  for (const auto& [name, request] : {std::pair("GetPlanDetail", R"({"ID":"110"})"),
                                      {"GetPlanDetail", R"({"ID":"9999"})"},
                                      {"GetPlansInGroup", R"({"GroupID":"8"})"},
                                      {"GetPlanGroups", R"({"ParentID":"root"})"},
                                      {"GetAllUserInfo", ""},
                                      {"ViewShareUsers", R"({"share_users":"77","view_id":"110"})"}}) {
    std::string response;
    plugin.Ask(name, request, response);
    all += response + "\n";
  }
  return all;
}

TEST_F(BadHostTest, AnswersAlikeInEveryLocaleAndWithoutAnApplication) {
  std::string output;
  ASSERT_TRUE(Shell("localedef -i de_DE -f UTF-8 '" + Path("de_DE.UTF-8") + "'", output)) << output;
  setenv("LOCPATH", m_folder.c_str(), 1);
  std::string first;
  for (const char* locale : {"C", "de_DE.UTF-8"}) {
    ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
    const auto connection = Connect();
    const host::Plugin plugin(PLUGIN_LIBRARY);
    ASSERT_TRUE(plugin.LoadViews(std::chrono::seconds(60)));
    const std::string answers = Answers(plugin);
    // The second is a key, for there is no translator.
    for (const char* part : {"\"-1.000000\"", "NYyjnxIZwFAorxuFXv", "\"maria\""}) {
      EXPECT_NE(answers.find(part), std::string::npos) << part << " in " << answers;
    }
    if (first.empty()) first = answers;
    EXPECT_EQ(answers, first) << locale;
    connection->StopDownload();
  }
  std::setlocale(LC_ALL, "C");
  unsetenv("LOCPATH");
}

TEST_F(BadHostTest, LoadedTwiceItIsOneAndStaysUntilTheLastHasGone) {
  const auto connection = Connect();
  auto one = std::make_unique<host::Plugin>(PLUGIN_LIBRARY);
  const host::Plugin other(PLUGIN_LIBRARY);
  ASSERT_TRUE(one->LoadViews(std::chrono::seconds(60)));
  std::string response;
  EXPECT_TRUE(other.Ask("GetPlanDetail", R"({"ID":"110"})", response)) << "what one has loaded the other has";
  one.reset();
  EXPECT_TRUE(other.Ask("GetPlanDetail", R"({"ID":"110"})", response));
  connection->StopDownload();
}

// Hosts stop the download first; one that does not takes no harm as long as none of its observers is being called.
TEST_F(BadHostTest, UnloadsWhileTheDownloadRunsAndChangesArrive) {
  const auto connection = Connect();
  std::atomic<bool> isOver{false};
  std::atomic<int> made{0};
  std::thread colleague([&] {
    auto& server = *connection->EmbeddedServer();
    const server::test::Client client(server.Port(), server.OpenLocalSession("maria")->token);
    for (; !isOver; ++made) client.AddGroup("busy", -1, -1);
  });
  for (int round = 0; round < 20; ++round) {
    const host::Plugin plugin(PLUGIN_LIBRARY);
    EXPECT_TRUE(plugin.LoadViews(std::chrono::seconds(60)));
  }
  isOver = true;
  colleague.join();
  EXPECT_GT(made, 0);
  EXPECT_EQ(ResourceStore::CViewGroupManager::Instance().GetDownloadStatus().state,
            ResourceStore::DownloadState::Ready);
}

TEST_F(BadHostTest, ALibraryThatIsNotItIsToldByWhatItLacks) {
  std::string source = "extern \"C\" {\n";
#define QORVI_FUNCTION(name) source += std::string(#name) == "GetPlanDetail" ? "" : "void " #name "() {}\n";
  QORVI_EXPORTED_FUNCTIONS(QORVI_FUNCTION)
#undef QORVI_FUNCTION
  Compile("nothing.so", "int x;", "-shared");
  Compile("older.so", source + "}", "-shared");
  EXPECT_EQ(WhyNot("nothing.so"), Path("nothing.so") + " is not the plugin: it has no InitEnvir");
  EXPECT_EQ(WhyNot("older.so"), Path("older.so") + " is not the plugin: it has no GetPlanDetail");

  // One that was built for another platform package: of another version, and of the same with other operations in it.
  Compile("libVantBase.so.9", "int x;", "-shared -Wl,-soname,libVantBase.so.9");
  Compile("newer.so", source + "}", "-shared -Wl,--no-as-needed '" + Path("libVantBase.so.9") + "'");
  fs::remove(Path("libVantBase.so.9"));
  EXPECT_NE(WhyNot("newer.so").find("libVantBase.so.9: cannot open shared object file"), std::string::npos)
      << WhyNot("newer.so");
}

// At once, and not at the first call of what is missing, which would end the host.
TEST_F(BadHostTest, APlatformWithoutAnOperationOfThePluginsKeepsItFromLoading) {
  Compile("libVeltControl.so.1", "int x;", "-shared -Wl,-soname,libVeltControl.so.1");
  Compile("loads",
          "#include <dlfcn.h>\n#include <cstdio>\nint main(int, char** argv) {\n"
          "if (dlopen(argv[1], RTLD_LAZY)) return 0;\nstd::puts(dlerror());\nreturn 1;\n}\n",
          "-ldl");
  std::string good, bad;
  EXPECT_TRUE(Shell("'" + Path("loads") + "' '" PLUGIN_LIBRARY "'", good)) << good;
  EXPECT_FALSE(Shell("LD_LIBRARY_PATH='" + Path("") + "' '" + Path("loads") + "' '" PLUGIN_LIBRARY "'", bad));
  EXPECT_NE(bad.find("undefined symbol"), std::string::npos) << bad;
  EXPECT_NE(bad.find("VeltControl"), std::string::npos) << bad;
}

}  // namespace
