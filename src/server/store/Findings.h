// SPDX-License-Identifier: Apache-2.0
// What is wrong in a store, one line each: "view 12 is left out: its owner 7 does not exist".
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace server {

class Findings {
 public:
  explicit Findings(size_t mostLines) : m_mostLines(mostLines) {}

  void Add(std::string line) {
    ++m_count;
    if (m_lines.size() < m_mostLines) m_lines.push_back(std::move(line));
  }
  size_t Count() const { return m_count; }
  const std::vector<std::string>& Lines() const { return m_lines; }  // the first ones

 private:
  const size_t m_mostLines;
  size_t m_count = 0;
  std::vector<std::string> m_lines;
};

}  // namespace server
