// SPDX-License-Identifier: Apache-2.0
// Programs as processes of their own, whichever system it has.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace test_programs {

// SIGTERM, or on Windows the break key for a process of a group of its own. False where nobody can be asked: Wine has
// no console unless it is started on a terminal.
bool AskToStop(int64_t process);
// On Windows alone: with which flags a process is made that can be asked so. It has this one's console.
std::uint32_t FlagsOfStoppable(std::uint32_t flags);

// Ends with the object: asked to stop, and after ten seconds killed.
class Program {
 public:
  // The program is looked for on the path. Throws std::runtime_error; elsewhere than on Windows a program that cannot
  // be started says nothing and ends.
  explicit Program(const std::vector<std::string>& command);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  int64_t Id() const;
  bool HasEnded();
  // The next line that it writes to stdout, or what there is of it after a minute.
  std::string Line();
  // All that it writes until it ends.
  std::string All() {
    std::string all;
    for (std::string line = Line(); !line.empty(); line = Line()) all += line;
    return all;
  }

 private:
  struct Process;
  const std::unique_ptr<Process> m_process;
};

}  // namespace test_programs
