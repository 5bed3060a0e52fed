// SPDX-License-Identifier: Apache-2.0
// An access log whose reader is slow or gone.
#include "server/http/AccessLog.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "EchoHandler.h"
#include "TestClient.h"

namespace server::test {
namespace {

class AccessLogTest : protected TestFolder, public HttpSideTest<Echo> {
 protected:
  AccessLogTest() { EXPECT_EQ(mkfifo(m_file.c_str(), 0600), 0); }

  const std::string m_file = Path("access.log");
};

TEST_F(AccessLogTest, WhoReadsItMayEnd) {
  const int reader = open(m_file.c_str(), O_RDONLY | O_NONBLOCK);
  settings.accessLog = m_file;
  Serve();
  close(reader);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Wire(server->Port(), Head("GET /a", kClose)).NextStatus(), 200);
  server.reset();  // the log is written by now
}

TEST_F(AccessLogTest, WaitsForNobodyWhoReadsItAndSaysHowManyLinesAreLost) {
  constexpr long kRequests = 25000;  // more than the pipe and two batches hold
  const int pipe = open(m_file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  auto log = std::make_unique<AccessLog>(m_file);
  AccessEntry entry{"127.0.0.5", "-", {}, "GET /a HTTP/1.1", 200, 0, "", ""};
  for (long i = 0; i < kRequests; ++i) log->Add(entry);

  std::string text;
  pollfd readable{pipe, POLLIN, 0};
  long written = 0, lost = 0, said = 0;
  while (written + lost < kRequests && poll(&readable, 1, 20000) > 0) {
    char piece[4096];
    const ssize_t count = read(pipe, piece, sizeof piece);
    if (count > 0) text.append(piece, static_cast<size_t>(count));
    for (size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) {
      if (std::sscanf(text.c_str(), "viewserver: %ld requests are not in the access log", &said) == 1) {
        lost += said;
      } else {
        ++written;
      }
    }
  }
  EXPECT_EQ(written + lost, kRequests);
  EXPECT_GT(lost, 0);
  for (long i = 0; i < kRequests; ++i) log->Add(entry);
  EXPECT_LT(TimeOf([&log] { log.reset(); }), std::chrono::seconds(20)) << "nor does its end";
  close(pipe);
}

}  // namespace
}  // namespace server::test
