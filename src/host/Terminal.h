// SPDX-License-Identifier: Apache-2.0
// What people read: names made safe to print, and whole lines that do not mix.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace host {

// The text as it may be shown on a terminal: drawing::SafeText of it; what is not UTF-8 becomes U+FFFD.
std::string Printable(std::string_view text);

// "1 view", "2 views".
std::string Counted(size_t count, const std::string& what);

// Whether a person watches stdout, or stderr.
bool IsTerminalOut();
bool IsTerminalErr();

// How many columns the terminal on stdout has; 100 where there is none.
int ColumnsOut();

// The same of stderr; 0 where there is none.
size_t ColumnsErr();

// Whether a person is there to be asked.
bool CanAsk();
// Asks on stderr; whether the answer is yes.
bool Ask(const std::string& question);

// One line to stderr.
void Say(std::string_view line);

// Writes whole lines to stdout and flushes each. Any thread.
class LineWriter {
 public:
  void Write(std::string_view line);

 private:
  std::mutex m_mutex;
};

}  // namespace host
