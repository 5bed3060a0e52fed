// SPDX-License-Identifier: Apache-2.0
// A program as a process of its own, and `viewserver` as one.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace server::test {

// Ends with the object: SIGTERM, and after ten seconds SIGKILL.
class Program {
 public:
  explicit Program(const std::vector<std::string>& command) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    std::vector<char*> arguments;
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    m_pid = fork();
    if (m_pid == 0) {
      dup2(ends[1], STDOUT_FILENO);
      execvp(arguments[0], arguments.data());
      _exit(127);
    }
    close(ends[1]);
    m_output = ends[0];
  }
  ~Program() {
    if (!m_isOver) kill(m_pid, SIGTERM);
    for (int i = 0; i < 1000 && !HasEnded(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (!m_isOver) kill(m_pid, SIGKILL), waitpid(m_pid, &m_status, 0);
    close(m_output);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  pid_t Pid() const { return m_pid; }
  bool HasEnded() {
    m_isOver = m_isOver || waitpid(m_pid, &m_status, WNOHANG) == m_pid;
    return m_isOver;
  }
  // The next line that it writes, or what there is of it after a minute.
  std::string Line() {
    std::string line;
    pollfd readable{m_output, POLLIN, 0};
    for (char c = 0; c != '\n' && poll(&readable, 1, 60000) > 0 && read(m_output, &c, 1) == 1;) line += c;
    return line;
  }
  // All that it writes until it ends.
  std::string All() {
    std::string all;
    for (std::string line = Line(); !line.empty(); line = Line()) all += line;
    return all;
  }

 private:
  pid_t m_pid = 0;
  int m_output = -1;
  int m_status = 0;
  bool m_isOver = false;
};

class TestFolder {
 public:
  TestFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "viewserver-test-XXXXXX").string();
    m_path = mkdtemp(pattern.data());
  }
  ~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(m_path / name, std::ios::binary) << text;
    return (m_path / name).string();
  }
  std::string Path() const { return m_path.string(); }

 private:
  std::filesystem::path m_path;
};

class ServerProgram {
 public:
  explicit ServerProgram(const std::string& seed, const std::vector<std::string>& options = {})
      : m_program(Command(seed, options)), m_port(AwaitPort()) {}
  // The whole command line.
  explicit ServerProgram(const std::vector<std::string>& command) : m_program(command), m_port(AwaitPort()) {}
  uint16_t Port() const { return m_port; }
  // The most memory that it has had.
  long PeakMebibytes() const {
    std::ifstream status("/proc/" + std::to_string(m_program.Pid()) + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6)) / 1024;
    }
    return -1;
  }
  void ForgetPeak() const { std::ofstream("/proc/" + std::to_string(m_program.Pid()) + "/clear_refs") << 5; }

 private:
  uint16_t AwaitPort() {
    const std::string line = m_program.Line();
    if (line.rfind("Listening", 0) != 0) throw std::runtime_error("viewserver does not start: " + line);
    return static_cast<uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }
  std::vector<std::string> Command(const std::string& seed, const std::vector<std::string>& options) const {
    std::vector<std::string> command{
        VIEWSERVER_FILE, "--data",     m_folder.Path() + "/site.db", "--seed", m_folder.Write("seed.json", seed),
        "--listen",      "127.0.0.1:0"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }

  TestFolder m_folder;
  Program m_program;
  const uint16_t m_port;
};

}  // namespace server::test
