// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <fstream>
#include <mutex>
#include <string>

#include "VantBase/Log.h"

namespace host {

// "LEVEL MODULE TEXT" on one line: a line end in the text is written \n (CR LF counts as one line end, a CR alone is
// written \r) and a backslash \\.
std::string LogLine(int level, const char* module, const std::string& text);
// "2026-03-05T07:08:09.012Z ", the time in UTC.
std::string TimeText(std::chrono::system_clock::time_point time);
// The first `columns` characters of the line, the last of them "…" where it has more; the whole line for 0 columns.
std::string CutLine(const std::string& line, size_t columns);

// Receives the process's log: every line into a file, onto stderr, or both. Any thread.
class LogFile : public Vant::Base::ILogSink {
 public:
  // An empty name writes no file. Throws Failure kUsage when the file cannot be written. An existing file is continued.
  // `withTime` puts the time before each line. Lines on a terminal are cut to its width.
  LogFile(const std::string& file, bool toStderr, bool withTime);

  bool Wants(int level) const override;
  void Write(int level, const char* module, const std::string& text) override;

 private:
  const bool m_toStderr;
  const bool m_withTime;
  std::mutex m_mutex;  // held while a line is written
  std::ofstream m_file;
};

}  // namespace host
