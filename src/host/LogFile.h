// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fstream>
#include <mutex>
#include <string>

#include "VantBase/Log.h"

namespace host {

// "LEVEL MODULE TEXT" on one line: a line end in the text is written \n (CR LF counts as one line end, a CR alone is
// written \r) and a backslash \\.
std::string LogLine(int level, const char* module, const std::string& text);

// Receives the process's log: every line into a file, onto stderr, or both. Any thread.
class LogFile : public Vant::Base::ILogSink {
 public:
  // An empty name writes no file. Throws Failure kUsage when the file cannot be written. An existing file is continued.
  LogFile(const std::string& file, bool toStderr);

  bool Wants(int level) const override;
  void Write(int level, const char* module, const std::string& text) override;

 private:
  const bool m_toStderr;
  std::mutex m_mutex;  // held while a line is written
  std::ofstream m_file;
};

}  // namespace host
