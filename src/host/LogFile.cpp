// SPDX-License-Identifier: Apache-2.0
#include "host/LogFile.h"

#include <QDateTime>
#include <QString>
#include <QVector>
#include <algorithm>

#include "base/system/Files.h"
#include "host/Failure.h"
#include "host/Look.h"
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

std::string TimeText(std::chrono::system_clock::time_point time) {
  using std::chrono::duration_cast;
  const auto since = duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
  return QDateTime::fromMSecsSinceEpoch(since, Qt::UTC).toString(Qt::ISODateWithMs).toStdString() + " ";
}

std::string CutLine(const std::string& line, size_t columns) {
  const QVector<uint> characters = QString::fromStdString(line).toUcs4();
  if (columns == 0 || static_cast<size_t>(characters.size()) <= columns) return line;
  const std::string end = Ellipsis();
  const int kept = std::max(static_cast<int>(columns) - (IsAscii() ? 3 : 1), 0);
  return QString::fromUcs4(characters.data(), kept).toStdString() + end;
}

LogFile::LogFile(const std::string& file, bool toStderr, bool withTime) : m_toStderr(toStderr), m_withTime(withTime) {
  if (file.empty()) return;
  m_file.open(base::PathOf(file), std::ios::binary | std::ios::app);
  if (!m_file) throw Failure(kUsage, "The log file " + file + " cannot be written; name another one with --log-file");
}

bool LogFile::Wants(int) const {
  return m_toStderr || m_file.is_open();
}

void LogFile::Write(int level, const char* module, const std::string& text) {
  const std::string time = m_withTime ? TimeText(std::chrono::system_clock::now()) : "";
  const std::string line = time + LogLine(level, module, text);
  if (m_toStderr) Say(CutLine(Printable(line), ColumnsErr()));
  if (!m_file.is_open()) return;
  std::lock_guard<std::mutex> lock(m_mutex);
  m_file << line << '\n' << std::flush;
}

}  // namespace host
