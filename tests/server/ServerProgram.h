// SPDX-License-Identifier: Apache-2.0
// `viewserver` as a process of its own.
#pragma once

#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "TestClient.h"
#include "system/Program.h"

namespace server::test {

using test_programs::Program;

class ServerProgram {
 public:
  explicit ServerProgram(const std::string& seed, const std::vector<std::string>& options = {})
      : m_program(Command(seed, options)), m_port(AwaitPort()) {}
  // The whole command line.
  explicit ServerProgram(const std::vector<std::string>& command) : m_program(command), m_port(AwaitPort()) {}
  uint16_t Port() const { return m_port; }
  // The most memory that it has had.
  long PeakMebibytes() const {
    std::ifstream status("/proc/" + std::to_string(m_program.Id()) + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6)) / 1024;
    }
    return -1;
  }
  void ForgetPeak() const { std::ofstream("/proc/" + std::to_string(m_program.Id()) + "/clear_refs") << 5; }

 private:
  uint16_t AwaitPort() {
    const std::string line = m_program.Line();
    if (line.rfind("Listening", 0) != 0) throw std::runtime_error("viewserver does not start: " + line);
    return static_cast<uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }
  std::vector<std::string> Command(const std::string& seed, const std::vector<std::string>& options) const {
    std::vector<std::string> command{
        VIEWSERVER_FILE, "--data",     m_folder.Path("site.db"), "--seed", m_folder.WriteFile("seed.json", seed),
        "--listen",      "127.0.0.1:0"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }

  TestFolder m_folder;
  Program m_program;
  const uint16_t m_port;
};

}  // namespace server::test
