// SPDX-License-Identifier: Apache-2.0
#include "host/Terminal.h"

#include <cstdio>
#include <iostream>
#include <string>

#include "drawing/SafeText.h"

#ifdef _WIN32
#include <io.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace host {

std::string Printable(std::string_view text) {
  return drawing::SafeText(QString::fromUtf8(text.data(), static_cast<int>(text.size()))).toStdString();
}

std::string Counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

bool IsTerminalOut() {
#ifdef _WIN32
  return _isatty(_fileno(stdout)) != 0;
#else
  return isatty(STDOUT_FILENO) != 0;
#endif
}

bool IsTerminalErr() {
#ifdef _WIN32
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

namespace {

int ColumnsOf([[maybe_unused]] int descriptor, int otherwise) {
#ifndef _WIN32
  winsize size{};
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
#endif
  return otherwise;
}

}  // namespace

int ColumnsOut() {
  return ColumnsOf(1, 100);
}

size_t ColumnsErr() {
  return static_cast<size_t>(ColumnsOf(2, 0));
}

bool CanAsk() {
#ifdef _WIN32
  return _isatty(_fileno(stdin)) != 0 && IsTerminalErr();
#else
  return isatty(STDIN_FILENO) != 0 && IsTerminalErr();
#endif
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
