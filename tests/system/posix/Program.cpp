// SPDX-License-Identifier: Apache-2.0
#include "system/Program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

namespace test_programs {

struct Program::Process {
  pid_t id = 0;
  int output = -1;
  int status = 0;
  bool isOver = false;
};

bool AskToStop(int64_t process) {
  return kill(static_cast<pid_t>(process), SIGTERM) == 0;
}

Program::Program(const std::vector<std::string>& command) : m_process(std::make_unique<Process>()) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  m_process->id = fork();
  if (m_process->id == 0) {
    dup2(ends[1], STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
  }
  close(ends[1]);
  m_process->output = ends[0];
}

Program::~Program() {
  if (!m_process->isOver) AskToStop(Id());
  for (int i = 0; i < 1000 && !HasEnded(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  if (!m_process->isOver) kill(m_process->id, SIGKILL), waitpid(m_process->id, &m_process->status, 0);
  close(m_process->output);
}

int64_t Program::Id() const {
  return m_process->id;
}

bool Program::HasEnded() {
  m_process->isOver = m_process->isOver || waitpid(m_process->id, &m_process->status, WNOHANG) == m_process->id;
  return m_process->isOver;
}

std::string Program::Line() {
  std::string line;
  pollfd readable{m_process->output, POLLIN, 0};
  for (char c = 0; c != '\n' && poll(&readable, 1, 60000) > 0 && read(m_process->output, &c, 1) == 1;) line += c;
  return line;
}

}  // namespace test_programs
