// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace host {

// A line on stderr that counts up, while a person watches; nothing otherwise. Gone when it is destroyed.
class Progress {
 public:
  Progress(std::string what, size_t total);
  ~Progress();
  Progress(const Progress&) = delete;

  void Step();
  // One line on stdout, above the progress.
  void Report(const std::string& line);

 private:
  const std::string m_what;
  const size_t m_total;
  const bool m_shown;
  size_t m_done = 0;

  void Draw() const;
  void Clear() const;
};

}  // namespace host
