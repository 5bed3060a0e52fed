// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>

#include "host/Failure.h"
#include "host/Progress.h"

namespace host {

// How a command that edits is carried out, and told of.
struct Manner {
  bool isDryRun = false;
  bool asJson = false;
};

// What an outcome is about: in words, and for programs.
struct Subject {
  std::string text;  // "view 107 public/Station/All platforms"
  std::string kind;  // "view", "group", "user"
  std::string id;    // empty: it has none yet
};

// What became of each thing that a command works on: a line on stdout for each, and a sum. As JSON each is an object:
//
//   {"Outcome":"changed","Kind":"view","ID":"107","Text":"view 107 public/...","Detail":"1 place"}
//   {"Done":3,"Left":0,"Failed":0}
//
// --quiet leaves out what is done and, where nothing failed, the sum.
class Outcomes {
 public:
  // `doing` stands before the progress; `done` is "changed", which a dry run says as "would change".
  Outcomes(const char* doing, const char* done, const char* wouldDo, size_t count, Manner manner)
      : m_progress(doing, count), m_asJson(manner.asJson), m_done(manner.isDryRun ? wouldDo : done), m_doneSum(m_done) {
    m_doneSum[0] = static_cast<char>(m_doneSum[0] - 'a' + 'A');
  }

  void Done(const Subject& what, const std::string& detail = {});
  void Left(const Subject& what, const std::string& why);
  // `isByServer` where the server was asked.
  void Failed(const Subject& what, const std::string& why, bool isByServer = true);
  // Whether to give up: a server that is gone fails all that follows.
  bool IsHopeless() const { return m_failuresInARow >= kGiveUpAfter; }
  // The sum on stdout; `what` is "view". Answers what the command is to end with.
  int Sum(const std::string& what);

 private:
  static constexpr int kGiveUpAfter = 5;

  void Report(const std::string& outcome, const Subject& what, const std::string& detail, std::string line);
  void ReportSum(const std::string& what);

  Progress m_progress;
  bool m_asJson = false;
  std::string m_done;
  std::string m_doneSum;
  size_t m_doneCount = 0;
  size_t m_left = 0;
  size_t m_failed = 0;
  int m_failuresInARow = 0;
};

}  // namespace host
