// SPDX-License-Identifier: Apache-2.0
#include "host/Terminal.h"

#include <QString>
#include <QVector>
#include <cstdint>
#include <cstdio>
#include <string>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace host {
namespace {

bool TurnsDirection(uint32_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

bool MayBeShown(uint32_t c) {
  switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return false;
    default:
      return !TurnsDirection(c);
  }
}

}  // namespace

std::string Printable(std::string_view text) {
  QString shown;
  const QString decoded = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
  for (const uint32_t c : decoded.toUcs4()) {
    if (MayBeShown(c)) {
      shown += QString::fromUcs4(&c, 1);
    } else {
      shown += QStringLiteral("\\u%1").arg(c, 4, 16, QLatin1Char('0'));
    }
  }
  return shown.toStdString();
}

std::string Counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

bool IsTerminalErr() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

void Say(std::string_view line) {
  const std::string whole = std::string(line) + "\n";
  std::fwrite(whole.data(), 1, whole.size(), stderr);
}

void LineWriter::Write(std::string_view line) {
  std::lock_guard<std::mutex> lock(m_mutex);
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

}  // namespace host
