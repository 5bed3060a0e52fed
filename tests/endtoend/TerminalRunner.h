// SPDX-License-Identifier: Apache-2.0
// viewctl on a terminal, as a person has it.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "ViewctlRunner.h"

namespace test {

// A program, viewctl unless said, whose stdin, stdout and stderr are a terminal of 100 columns.
class OnTerminal {
 public:
  OnTerminal(const QStringList& arguments, const std::string& password, const QStringList& variables = {},
             const QString& program = VIEWCTL_FILE) {
    NeedApplication();
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0) throw std::runtime_error("no terminal");
    const winsize size{40, 100, 0, 0};
    ioctl(m_master, TIOCSWINSZ, &size);
    QProcessEnvironment environment = EnvironmentWith(password);
    environment.insert("TERM", "xterm");
    for (const QString& variable : variables) {
      environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
    }
    m_process.setProcessEnvironment(environment);
    // The first terminal that the leader of a session opens becomes the one whose Ctrl-C it gets, and env lets it: who
    // runs the tests behind a shell's &, or under nohup, ignores it.
    const QString shell = QString("exec env --default-signal=INT setsid sh -c 'exec \"$@\" <%1 >%1 2>&1' sh \"$@\"")
                              .arg(ptsname(m_master));
    m_process.start("sh", QStringList{"-c", shell, "sh", program} + arguments);
  }
  ~OnTerminal() {
    m_process.kill();
    m_process.waitForFinished(kLimit);
    close(m_master);
  }

  void Type(const std::string& text) { EXPECT_EQ(write(m_master, text.data(), text.size()), ssize_t(text.size())); }
  // All that it has said up to now; waits until that part was said, or it ends.
  std::string SaysUntil(const std::string& part) {
    QElapsedTimer waited;
    waited.start();
    while (m_said.find(part) == std::string::npos && waited.elapsed() < kLimit && ReadSome()) {
    }
    return m_said;
  }
  // What it says to its end, and the exit status; -1: killed, -2: it does not end.
  Outcome Finish() {
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < kLimit && ReadSome()) {
    }
    const bool isEnded = m_process.state() == QProcess::NotRunning || m_process.waitForFinished(1000);
    const bool isNormal = isEnded && m_process.exitStatus() == QProcess::NormalExit;
    return {isNormal ? m_process.exitCode() : isEnded ? -1 : -2, m_said, {}, {}};
  }

 private:
  static constexpr int kLimit = 60000;

  // False where nobody has the terminal open any more, which is not so before the program has opened it.
  bool ReadSome() {
    m_process.waitForStarted(kLimit);
    pollfd one{m_master, POLLIN, 0};
    poll(&one, 1, 50);
    char text[4096];
    const ssize_t size = (one.revents & POLLIN) != 0 ? read(m_master, text, sizeof text) : 0;
    if (size > 0) m_said.append(text, static_cast<size_t>(size));
    if ((one.revents & POLLHUP) != 0 && size <= 0) m_process.waitForFinished(50);
    return size > 0 || m_process.state() != QProcess::NotRunning;
  }

  int m_master = -1;
  std::string m_said;
  QProcess m_process;
};

}  // namespace test
