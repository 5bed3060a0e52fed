// SPDX-License-Identifier: Apache-2.0
#include "host/PasswordPrompt.h"

#include <cerrno>
#include <cstdio>

#include "host/Failure.h"

#ifndef _WIN32
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <csignal>
#else
#include <iostream>
#endif

namespace host {
namespace {

#ifndef _WIN32
// Ctrl-C, of which any thread may be told at any moment, as bytes that can be waited for.
int g_interrupts[2] = {-1, -1};

void OnInterrupt(int) {
  [[maybe_unused]] const ssize_t written = write(g_interrupts[1], "", 1);
}

// As long as it lives, what is typed is not shown, and Ctrl-C ends the reading instead of the program, which would
// leave the terminal so.
class SilentTerminal {
 public:
  SilentTerminal() {
    if (pipe2(g_interrupts, O_CLOEXEC) != 0) throw Failure(kRefused, "No password can be asked for");
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

// What is typed before the question is thrown away.
std::string ReadSilently(const std::string& question) {
  const SilentTerminal silent;
  std::fputs(question.c_str(), stderr);
  std::string line;
  for (char c = 0; silent.AwaitInput(); line += c) {
    if (read(STDIN_FILENO, &c, 1) != 1 || c == '\n') return line;
  }
  return {};
}
#else
std::string ReadSilently(const std::string& question) {
  std::fputs(question.c_str(), stderr);
  std::string line;
  std::getline(std::cin, line);
  return line;
}
#endif

}  // namespace

std::string AskForPassword(const std::string& question) {
  std::string password = ReadSilently(question + ": ");
  std::fputc('\n', stderr);
  if (password.empty()) throw Failure(kUsage, "No password was given");
  return password;
}

}  // namespace host
