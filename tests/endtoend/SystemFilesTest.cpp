// SPDX-License-Identifier: Apache-2.0
// viewctl and what of this system looks like files: devices, pipes, processes.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "ViewctlRunner.h"

namespace test {
namespace {

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

TEST(SystemFilesTest, ADeviceOrAPipeIsWrittenIntoAndAFileReplaced) {
  const Site site;
  const QTemporaryDir folder;
  const QString file = folder.filePath("pipe"), copy = folder.filePath("copy.json");
  EXPECT_EQ(RunAs(site, "maria", {"export", "130", "-o", "/dev/null"}).status, 0);
  EXPECT_EQ(RunAs(site, "maria", {"export", "130", "-o", "/dev/full"}).status, 2);
  const std::string pipe = file.toStdString();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int end = open(pipe.c_str(), O_RDWR | O_NONBLOCK);
  EXPECT_EQ(RunAs(site, "maria", {"export", "130", "-o", file}).status, 0);
  std::string content(4096, ' ');
  content.resize(static_cast<size_t>(std::max<ssize_t>(read(end, content.data(), content.size()), 0)));
  close(end);
  EXPECT_EQ(RunAs(site, "maria", {"export", "130", "-o", copy}).status, 0);
  EXPECT_EQ(content, ReadFile(copy.toStdString()));
  struct stat left {};
  ASSERT_EQ(stat(pipe.c_str(), &left), 0);
  EXPECT_TRUE(S_ISFIFO(left.st_mode));
}

TEST(SystemFilesTest, TheDemosOtherUserIsAtWorkInAProcessOfItsOwn) {
  Running demo({"demo"}, "");
  ASSERT_NE(demo.NextLine(), "");  // the tour begins once both are there
  const std::string id = std::to_string(demo.Id());
  const std::vector<std::string> children = Words(ReadFile("/proc/" + id + "/task/" + id + "/children"));
  ASSERT_EQ(children.size(), 1u);
  const std::string arguments = ReadFile("/proc/" + children[0] + "/cmdline");
  EXPECT_TRUE(Has(arguments, "script")) << arguments;
  EXPECT_FALSE(Has(arguments, "sample-")) << "others on the machine may read arguments";
  kill(static_cast<pid_t>(std::stol(children[0])), SIGKILL);
  EXPECT_TRUE(Has(demo.NextErrorLine(), "viewctl: The ")) << "the tour needs kenji";
  EXPECT_EQ(demo.Finish(), 1);
}

}  // namespace
}  // namespace test
