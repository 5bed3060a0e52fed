// SPDX-License-Identifier: Apache-2.0
#include "host/edit/Outcomes.h"

#include <cstdio>

#include "host/Terminal.h"

namespace host {

void Outcomes::Report(size_t& count, const std::string& outcome, const std::string& what, const std::string& detail) {
  ++count;
  m_failuresInARow = 0;
  m_progress.Step();
  m_progress.Report(outcome + " " + Printable(what) + (detail.empty() ? "" : ": " + Printable(detail)));
}

int Outcomes::Sum(const std::string& what) {
  if (IsHopeless()) m_progress.Report("gave up after " + std::to_string(kGiveUpAfter) + " failures in a row");
  m_progress.Report(m_doneSum + " " + Counted(m_doneCount, what) + ", left " + std::to_string(m_left) + ", failed " +
                    std::to_string(m_failed));
  return m_failed == 0 ? kDone : kRefused;
}

}  // namespace host
