// SPDX-License-Identifier: Apache-2.0
#include "host/edit/Outcomes.h"

#include <cstdio>

#include "host/JsonText.h"
#include "host/Look.h"
#include "host/Terminal.h"

namespace host {
namespace {

std::string LineOf(const std::string& outcome, const Subject& what, const std::string& detail) {
  return outcome + " " + Printable(what.text) + (detail.empty() ? "" : ": " + Printable(detail));
}

}  // namespace

void Outcomes::Done(const Subject& what, const std::string& detail) {
  ++m_doneCount;
  m_failuresInARow = 0;
  if (IsQuiet() && !m_asJson) return m_progress.Step();
  Report(m_done, what, detail, LineOf(m_done, what, detail));
}

void Outcomes::Left(const Subject& what, const std::string& why) {
  ++m_left;
  m_failuresInARow = 0;
  Report("left", what, why, StyledOut(Style::kLeft, LineOf("left", what, why)));
}

void Outcomes::Failed(const Subject& what, const std::string& why, bool isByServer) {
  ++m_failed;
  if (isByServer) ++m_failuresInARow;
  Report("failed", what, why, StyledOut(Style::kBad, LineOf("failed", what, why)));
}

void Outcomes::Report(const std::string& outcome, const Subject& what, const std::string& detail, std::string line) {
  m_progress.Step();
  if (m_asJson) {
    ObjectText text;
    text.Add("Outcome", outcome).Add("Kind", what.kind).Add("ID", what.id).Add("Text", what.text);
    line = text.Add("Detail", detail).Text();
  }
  m_progress.Report(line);
}

int Outcomes::Sum(const std::string& what) {
  const std::string givenUp = "gave up after " + std::to_string(kGiveUpAfter) + " failures in a row";
  if (IsHopeless() && m_asJson) Say(givenUp);
  if (IsHopeless() && !m_asJson) m_progress.Report(givenUp);
  if (!IsQuiet() || m_asJson || m_failed > 0) ReportSum(what);
  return m_failed == 0 ? kDone : kRefused;
}

void Outcomes::ReportSum(const std::string& what) {
  if (m_asJson) {
    ObjectText text;
    text.Add("Done", static_cast<int>(m_doneCount)).Add("Left", static_cast<int>(m_left));
    return m_progress.Report(text.Add("Failed", static_cast<int>(m_failed)).Text());
  }
  m_progress.Report(m_doneSum + " " + Counted(m_doneCount, what) + ", left " + std::to_string(m_left) + ", failed " +
                    std::to_string(m_failed));
}

}  // namespace host
