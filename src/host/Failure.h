// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace host {

// What viewctl tells its caller when it ends.
enum ExitStatus : int {
  kDone = 0,
  kRefused = 1,       // a call answered false
  kUsage = 2,         // the command line, or a file it names, cannot be used
  kNoConnection = 3,  // no server, no login, or nothing loaded in time
};

// Ends a command: one plain sentence for stderr and the exit status.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& sentence) : std::runtime_error(sentence), m_status(status) {}
  ExitStatus Status() const { return m_status; }

 private:
  ExitStatus m_status;
};

}  // namespace host
