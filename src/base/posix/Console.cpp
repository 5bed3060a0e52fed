// SPDX-License-Identifier: Apache-2.0
#include "base/system/Console.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace base {

namespace {

int DescriptorOf(Stream stream) {
  return static_cast<int>(stream);
}
static_assert(static_cast<int>(Stream::kIn) == STDIN_FILENO && static_cast<int>(Stream::kErr) == STDERR_FILENO);

// Ctrl-C, of which any thread may be told at any moment, as bytes that can be waited for.
int g_interrupts[2] = {-1, -1};

void OnInterrupt(int) {
  [[maybe_unused]] const ssize_t written = write(g_interrupts[1], "", 1);
}

// As long as it lives, what is typed is not shown, and Ctrl-C ends the reading instead of the program, which would
// leave the terminal so. REQUIRES: g_interrupts is a pipe.
class SilentTerminal {
 public:
  SilentTerminal() {
    tcgetattr(STDIN_FILENO, &m_before);
    termios silent = m_before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    struct sigaction action {};
    action.sa_handler = OnInterrupt;
    sigaction(SIGINT, &action, &m_action);
  }
  ~SilentTerminal() {
    sigaction(SIGINT, &m_action, nullptr);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_before);
    for (const int end : g_interrupts) close(end);
  }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;

  // False after Ctrl-C.
  bool AwaitInput() const {
    pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {g_interrupts[0], POLLIN, 0}};
    while (poll(sources, 2, -1) < 0 && errno == EINTR) {
    }
    return sources[1].revents == 0;
  }

 private:
  termios m_before{};
  struct sigaction m_action {};
};

}  // namespace

void PrepareStreams() {}

bool IsTerminal(Stream stream) {
  return isatty(DescriptorOf(stream)) != 0;
}

int ColumnsOf(Stream stream) {
  winsize size{};
  return ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool HasColours(Stream) {
  const char* const terminal = std::getenv("TERM");
  const std::string_view name = terminal ? terminal : "";
  return !name.empty() && name != "dumb";
}

std::optional<std::string> ReadUnseen(const std::string& question) {
  if (pipe2(g_interrupts, O_CLOEXEC) != 0) return std::nullopt;
  const SilentTerminal silent;
  std::fputs(question.c_str(), stderr);
  std::string line;
  for (char c = 0; silent.AwaitInput(); line += c) {
    if (read(STDIN_FILENO, &c, 1) != 1 || c == '\n') return line;
  }
  return std::string();
}

}  // namespace base
