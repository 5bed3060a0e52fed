// SPDX-License-Identifier: Apache-2.0
// Installs into a folder with a difficult name, builds the hosts of examples/ there as a stranger would, moves the
// installed tree, and runs them with its programs.
#include <QDir>
#include <QDirIterator>
#include <QProcess>

#include "../endtoend/ViewctlRunner.h"
#include "../server/ServerProgram.h"

namespace test {
namespace {

constexpr const char* kCompiler = "-DCMAKE_CXX_COMPILER=" CXX_COMPILER;

// Runs a developer's program to its end.
testing::AssertionResult Succeeds(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(program, arguments);
  const bool hasEnded = process.waitForFinished(400000) && process.exitStatus() == QProcess::NormalExit;
  if (hasEnded && process.exitCode() == 0) return testing::AssertionSuccess();
  return testing::AssertionFailure() << program.toStdString() << ' ' << arguments.join(' ').toStdString()
                                     << "\nended with " << (hasEnded ? process.exitCode() : -1) << "\n"
                                     << QString::fromUtf8(process.readAll()).right(4000).toStdString();
}

// What another project is compiled with, so that it runs with a library that sanitizers are built into.
QString CompilerFlags() {
  const QString sanitize = SANITIZE;
  return sanitize.isEmpty() ? "-O0" : "-O0 -fsanitize=" + sanitize;
}

// Where everything stands. It is made once, and what goes wrong meanwhile fails each test.
struct Places {
  Places() {
    NeedApplication();
    work.mkpath("build");
  }
  testing::AssertionResult Make() const {
    const QString prefix = Path("first präfix");
    for (const QStringList& step :
         {QStringList{"--install", BUILD_FOLDER, "--prefix", prefix},
          QStringList{"-S", prefix + "/share/qorvi/examples", "-B", Path("build"), "-G", "Ninja",
                      "-DCMAKE_PREFIX_PATH=" + prefix, "-DCMAKE_BUILD_TYPE=Debug", kCompiler,
                      "-DCMAKE_CXX_FLAGS=" + CompilerFlags()},
          QStringList{"--build", Path("build")}, QStringList{"--install", Path("build"), "--prefix", Path("bundle")}}) {
      if (const auto done = Succeeds(CMAKE_PROGRAM, step); !done) return done;
    }
    if (!QDir().rename(prefix, Installed(""))) return testing::AssertionFailure() << "not moved";
    return testing::AssertionSuccess();
  }
  QString Path(const QString& name) const { return work.filePath(name); }
  QString Installed(const QString& name) const { return Path("moved größer") + "/" + name; }

  QTemporaryDir folder;
  const QDir work{folder.path()};
};

class InstallTest : public testing::Test {
 protected:
  void SetUp() override {
    static const testing::AssertionResult s_made = At().Make();
    ASSERT_TRUE(s_made);
  }

  static const Places& At() {
    static const Places s_places;
    return s_places;
  }
  static QString Installed(const QString& name) { return At().Installed(name); }

  // Has a host hear of a group that an installed viewctl adds.
  static void RunAHost(const QString& program, const QString& url, const QStringList& more = {}) {
    qputenv("VIEWS_PASSWORD", "sample-maria");
    Running host(QStringList{url, "maria"} + more, {}, program);
    std::string line, all;
    while ((line = host.NextLine(60000)) != "Waiting for a change" && !line.empty()) all += line + "\n";
    ASSERT_EQ(line, "Waiting for a change") << all << host.Errors();
    EXPECT_NE(all.find("\"Name\":\"Station\"") == std::string::npos, all.find("\"Plans\"") == std::string::npos) << all;
    const Outcome added = test::Run({"--server", url, "call", "AddPlanGroup", R"({"Name":"New","ParentID":"-1"})"},
                                    "sample-admin", {}, Installed("bin/viewctl"));
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(host.NextLine(60000).substr(0, 9), "Heard of ");
    EXPECT_EQ(host.Finish(), 0) << host.Errors();
  }
};

// The installed viewserver with the installed sample site.
struct InstalledServer : server::test::ServerProgram {
  explicit InstalledServer(const Places& at)
      : ServerProgram({at.Installed("bin/viewserver").toStdString(), "--data", at.Path("store.db").toStdString(),
                       "--seed", at.Installed("share/qorvi/site.json").toStdString(), "--listen", "127.0.0.1:0"}) {}
  QString Url() const { return "http://127.0.0.1:" + QString::number(Port()); }
};

TEST_F(InstallTest, HostsFindTheLibraryBesideThemselvesAndWhereTheSystemLooks) {
  const InstalledServer server(At());
  for (const char* host : {"plain", "events"}) RunAHost(At().Path(QString("bundle/") + host), server.Url());
  // The build folder has no library beside the programs, and knows the first place only.
  qputenv("LD_LIBRARY_PATH", Installed(LIBRARY_FOLDER).toUtf8());
  for (const char* host : {"plain", "events"}) RunAHost(At().Path(QString("build/") + host), server.Url());
  qunsetenv("LD_LIBRARY_PATH");

  qputenv("VIEWS_PASSWORD", "sample-admin");
  const Outcome linked = test::Run({server.Url(), "admin", "101"}, {}, {}, At().Path("bundle/linked"));
  EXPECT_EQ(linked.out, "View 101 is there\nZoomed to 0.75\nHeard of 102\n") << linked.err;
  EXPECT_EQ(linked.status, 0);
}

// Which knows the platform by the place where it was installed first, and the library not at all.
TEST_F(InstallTest, InItsBuildFolderAHostIsToldWhereTheLibraryIs) {
  const InstalledServer server(At());
  const QString prefix = At().Path("first präfix");
  ASSERT_TRUE(QFile::link(Installed(""), prefix));
  const Outcome untold = test::Run({"http://127.0.0.1:1", "maria"}, {}, {}, At().Path("build/plain"));
  EXPECT_NE(untold.err.find("Cannot load library"), std::string::npos) << untold.err;
  EXPECT_EQ(untold.status, 1);
  RunAHost(At().Path("build/plain"), server.Url(), {prefix + "/" LIBRARY_FOLDER "/libQorviViewPlugin.so"});
  EXPECT_TRUE(QFile::remove(prefix));
}

TEST_F(InstallTest, AHostSaysWhatIsWrongAndEnds) {
  const QString plain = At().Path("bundle/plain");
  const Outcome noServer = test::Run({"http://127.0.0.1:1", "maria"}, {}, {}, plain);
  EXPECT_EQ(noServer.err, "No login: The server could not be reached\n");
  EXPECT_EQ(noServer.status, 1);
  for (const QStringList& arguments :
       {QStringList{"http://127.0.0.1:1", "maria"}, {"http://127.0.0.1:1", "maria", "x"}}) {
    const Outcome lacks = test::Run(arguments, {}, {}, At().Path("bundle/linked"));
    EXPECT_EQ(lacks.err, "usage: linked SERVER USER VIEW, where VIEW is the ID of one: 101 in the sample site\n");
    EXPECT_EQ(lacks.status, 2);
  }
}

TEST_F(InstallTest, ProgramsRunFromWhereTheyWereMovedTo) {
  EXPECT_EQ(test::Run({"--version"}, {}, {}, Installed("bin/viewctl")).out, "viewctl " PROJECT_VERSION "\n");
  const Outcome demo = test::Run({"demo"}, {}, {}, Installed("bin/viewctl"));
  EXPECT_EQ(demo.status, 0) << demo.err;
  const Outcome tree = test::Run({"tree", "--data", At().Path("store")}, {}, {}, Installed("bin/viewctl"));
  EXPECT_EQ(tree.status, 0) << tree.err;
}

TEST_F(InstallTest, BringsManualPagesAndCompletions) {
  const std::string page = ReadFile(Installed("share/man/man1/viewctl-show.1").toStdString());
  EXPECT_EQ(page, test::Run({"man", "show"}, {}, {}, Installed("bin/viewctl")).out);
  EXPECT_TRUE(QFile::exists(Installed("share/man/man1/viewctl.1")));
  const std::pair<const char*, const char*> completions[] = {{"bash-completion/completions/viewctl", "bash"},
                                                             {"zsh/site-functions/_viewctl", "zsh"},
                                                             {"fish/vendor_completions.d/viewctl.fish", "fish"}};
  for (const auto& [file, shell] : completions) {
    const std::string script = ReadFile(Installed("share/" + QString(file)).toStdString());
    EXPECT_EQ(script, test::Run({"completion", shell}, {}, {}, Installed("bin/viewctl")).out) << file;
  }
}

TEST_F(InstallTest, LibrariesOfThePlatformHaveVersionsAndThePluginHasNone) {
  const QDir libraries(Installed(LIBRARY_FOLDER));
  QStringList files = libraries.entryList({"*.so*"}, QDir::Files);
  QStringList expected{"libQorviViewPlugin.so"};
  for (const char* name : {"BizShared", "ErrorText", "NetLink", "ResourceStore", "VantBase", "VeltControl"}) {
    const QString file = QString("lib%1.so").arg(name);
    expected << file << file + ".1" << file + "." PROJECT_VERSION;
  }
  files.sort();
  expected.sort();
  EXPECT_EQ(files.join(' ').toStdString(), expected.join(' ').toStdString());
}

// Found by pkg-config in the moved tree, whose name has a blank and an umlaut.
TEST_F(InstallTest, EachHeaderCompilesByItselfAsCxx17WithWhatPkgConfigSays) {
  QStringList headers;
  for (QDirIterator file(Installed("include/qorvi"), {"*.h"}, QDir::Files, QDirIterator::Subdirectories);
       file.hasNext();) {
    headers << "'" + file.next() + "'";
  }
  EXPECT_GT(headers.size(), 25);
  const QString command =
      "PKG_CONFIG_PATH='" + Installed(LIBRARY_FOLDER) +
      "/pkgconfig'; export PKG_CONFIG_PATH; "
      "flags=$(pkg-config --cflags QorviViewPlugin) && eval \"$0 -std=c++17 -fsyntax-only -fPIC -w $flags " +
      headers.join(' ') + "\" && pkg-config --libs --exists QorviViewPlugin";
  EXPECT_TRUE(Succeeds("sh", {"-c", command, CXX_COMPILER}));
}

// A project that takes the source in; two of the libraries stand for all, since what they need is the same.
TEST_F(InstallTest, AnotherProjectTakesTheSourceIn) {
  const QDir folder(At().Path("other project"));
  ASSERT_TRUE(folder.mkpath("."));
  WriteFile(folder.filePath("main.cpp").toStdString(),
            "#include \"NetLink/RapidJsonProto.h\"\n#include \"QorviViewPlugin/Functions.h\"\n"
            "int main() { return QorviViewPlugin::Functions().GetPlanDetail ? 1 : "
            "NetLink::CRapidJsonProto().get_cnt(\"/a\"); }\n");
  WriteFile(folder.filePath("CMakeLists.txt").toStdString(),
            "cmake_minimum_required(VERSION 3.25)\nproject(Other LANGUAGES CXX)\ninclude(FetchContent)\n"
            "FetchContent_Declare(Qorvi SOURCE_DIR \"" SOURCE_FOLDER
            "\")\nFetchContent_MakeAvailable(Qorvi)\n"
            "add_executable(other main.cpp)\nset_target_properties(other PROPERTIES CXX_STANDARD 17)\n"
            "target_link_libraries(other PRIVATE QorviViewPlugin::NetLink)\n"
            "if(NOT TARGET QorviViewPlugin::QorviViewPlugin OR TARGET viewctl)\n  message(FATAL_ERROR "
            "\"targets\")\nendif()\n");
  const QString build = folder.filePath("build");
  EXPECT_TRUE(
      Succeeds(CMAKE_PROGRAM, {"-S", folder.path(), "-B", build, "-G", "Ninja", kCompiler, "-DCMAKE_CXX_FLAGS=-O0"}));
  EXPECT_TRUE(Succeeds(CMAKE_PROGRAM, {"--build", build, "--target", "other"}));
  EXPECT_TRUE(Succeeds(folder.filePath("build/other"), {}));
}

}  // namespace
}  // namespace test
