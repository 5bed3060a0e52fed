// SPDX-License-Identifier: Apache-2.0
#include "host/Terminal.h"

#include <cstdio>
#include <iostream>
#include <string>

#include "base/system/Console.h"
#include "drawing/SafeText.h"

namespace host {

std::string Printable(std::string_view text) {
  return drawing::SafeText(QString::fromUtf8(text.data(), static_cast<int>(text.size()))).toStdString();
}

std::string Counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

bool IsTerminalOut() {
  return base::IsTerminal(base::Stream::kOut);
}

bool IsTerminalErr() {
  return base::IsTerminal(base::Stream::kErr);
}

int ColumnsOut() {
  constexpr int kUsual = 100;
  const int columns = base::ColumnsOf(base::Stream::kOut);
  return columns > 0 ? columns : kUsual;
}

size_t ColumnsErr() {
  return static_cast<size_t>(base::ColumnsOf(base::Stream::kErr));
}

bool CanAsk() {
  return base::IsTerminal(base::Stream::kIn) && IsTerminalErr();
}

bool Ask(const std::string& question) {
  std::fprintf(stderr, "%s [y/N] ", question.c_str());
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "yes";
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
