// SPDX-License-Identifier: Apache-2.0
#include "host/LogFile.h"

#include "host/Failure.h"
#include "host/Terminal.h"

namespace host {

std::string LogLine(int level, const char* module, const std::string& text) {
  std::string line = std::to_string(level) + " " + module + " ";
  for (size_t i = 0; i < text.size(); ++i) {
    const bool crlf = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    if (crlf) continue;
    switch (text[i]) {
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      case '\\':
        line += "\\\\";
        break;
      default:
        line += text[i];
    }
  }
  return line;
}

LogFile::LogFile(const std::string& file, bool toStderr) : m_toStderr(toStderr) {
  if (file.empty()) return;
  m_file.open(file, std::ios::binary | std::ios::app);
  if (!m_file) throw Failure(kUsage, "The log file " + file + " cannot be written");
}

bool LogFile::Wants(int) const {
  return m_toStderr || m_file.is_open();
}

void LogFile::Write(int level, const char* module, const std::string& text) {
  const std::string line = LogLine(level, module, text);
  if (m_toStderr) Say(Printable(line));
  if (!m_file.is_open()) return;
  std::lock_guard<std::mutex> lock(m_mutex);
  m_file << line << '\n' << std::flush;
}

}  // namespace host
