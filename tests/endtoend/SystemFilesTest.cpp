// SPDX-License-Identifier: Apache-2.0
// viewctl and what of this system looks like files: devices, pipes, processes.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "ViewctlRunner.h"

namespace test {
namespace {

TEST(SystemFilesTest, ADeviceOrAPipeIsWrittenIntoAndAFileReplaced) {
  const Site site;
  const auto exportInto = [&](const QString& file) {
    return RunAs(site, "maria", {"export", "130", "-o", file}).status;
  };
  EXPECT_EQ(exportInto("/dev/null"), 0);
  EXPECT_EQ(exportInto("/dev/full"), 2);
  const std::string pipe = site.File("pipe").toStdString();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int end = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
  EXPECT_EQ(exportInto(site.File("pipe")), 0);
  std::string content(4096, ' ');
  content.resize(static_cast<size_t>(std::max<ssize_t>(read(end, content.data(), content.size()), 0)));
  close(end);
  EXPECT_EQ(exportInto(site.File("copy.json")), 0);
  EXPECT_EQ(content, ReadFile(site.File("copy.json")));
  struct stat left {};
  ASSERT_EQ(stat(pipe.c_str(), &left), 0);
  EXPECT_TRUE(S_ISFIFO(left.st_mode));
}

TEST(SystemFilesTest, AServerThatNobodyAsksIsIdleAndEndsByCtrlC) {
  const QTemporaryDir folder;
  Running serve({"serve", "--listen", "127.0.0.1:0", "--data", folder.path()}, "");
  ASSERT_TRUE(Has(serve.NextLine(), "User admin, ") && Has(serve.NextLine(), "Listening on "));
  const auto ticks = [&serve] {  // of the processor, a hundred a second
    const std::string stat = ReadFile(QString("/proc/%1/stat").arg(serve.Id()));
    const QStringList fields = Words(QString::fromStdString(stat.substr(stat.rfind(')') + 1)));
    EXPECT_GT(fields.size(), 12) << stat;
    return fields.value(11).toLong() + fields.value(12).toLong();
  };
  const long before = ticks();
  std::this_thread::sleep_for(std::chrono::seconds(1));
  EXPECT_LT(ticks() - before, 20);
  kill(static_cast<pid_t>(serve.Id()), SIGINT);
  EXPECT_EQ(serve.Finish(), 0);
}

TEST(SystemFilesTest, TheDemosOtherUserIsAtWorkInAProcessOfItsOwn) {
  Running demo({"demo"}, "");
  ASSERT_NE(demo.NextLine(), "");  // the tour begins once both are there
  const std::string listed = ReadFile(QString("/proc/%1/task/%1/children").arg(demo.Id()));
  const QStringList children = Words(QString::fromStdString(listed));
  ASSERT_EQ(children.size(), 1);
  const std::string arguments = ReadFile("/proc/" + children[0] + "/cmdline");
  EXPECT_TRUE(Has(arguments, "script")) << arguments;
  EXPECT_FALSE(Has(arguments, "sample-")) << "others on the machine may read arguments";
  kill(static_cast<pid_t>(children[0].toLong()), SIGKILL);
  EXPECT_TRUE(Has(demo.NextErrorLine(), "viewctl: The ")) << "the tour needs kenji";
  EXPECT_EQ(demo.Finish(), 1);
}

}  // namespace
}  // namespace test
