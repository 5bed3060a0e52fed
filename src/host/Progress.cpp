// SPDX-License-Identifier: Apache-2.0
#include "host/Progress.h"

#include <cstdio>

#include "host/Look.h"
#include "host/Terminal.h"

namespace host {

Progress::Progress(std::string what, size_t total)
    : m_what(std::move(what)), m_total(total), m_shown(total > 0 && IsTerminalErr() && !IsQuiet()) {}

Progress::~Progress() {
  Clear();
}

void Progress::Step() {
  ++m_done;
  Draw();
}

void Progress::Report(const std::string& line) {
  Clear();
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
  Draw();
}

void Progress::Draw() const {
  if (m_shown) std::fprintf(stderr, "\r%s %zu of %zu", m_what.c_str(), m_done, m_total);
}

void Progress::Clear() const {
  if (m_shown) std::fputs("\r\033[K", stderr);
}

}  // namespace host
