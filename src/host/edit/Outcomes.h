// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/Failure.h"
#include "host/Progress.h"

namespace host {

// What became of each thing that a command works on: a line on stdout for each, and a sum.
class Outcomes {
 public:
  // `doing` stands before the progress; `done` is "changed", which a dry run says as "would change".
  Outcomes(const char* doing, const char* done, const char* wouldDo, size_t count, bool isDryRun)
      : m_progress(doing, count), m_done(isDryRun ? wouldDo : done), m_doneSum(m_done) {
    m_doneSum[0] = static_cast<char>(m_doneSum[0] - 'a' + 'A');
  }

  void Done(const std::string& what, const std::string& detail = {}) { Report(m_doneCount, m_done, what, detail); }
  void Left(const std::string& what, const std::string& why) { Report(m_left, "left", what, why); }
  void Failed(const std::string& what, const std::string& why) {
    const int before = m_failuresInARow;
    Report(m_failed, "failed", what, why);
    m_failuresInARow = before + 1;
  }
  // Whether to give up: a server that is gone fails all that follows.
  bool IsHopeless() const { return m_failuresInARow >= kGiveUpAfter; }
  // The sum on stdout; `what` is "view". Answers what the command is to end with.
  int Sum(const std::string& what);

 private:
  static constexpr int kGiveUpAfter = 5;

  void Report(size_t& count, const std::string& outcome, const std::string& what, const std::string& detail);

  Progress m_progress;
  std::string m_done;
  std::string m_doneSum;
  size_t m_doneCount = 0;
  size_t m_left = 0;
  size_t m_failed = 0;
  int m_failuresInARow = 0;
};

}  // namespace host
