// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace host {

// Rows below their heads, each column as wide as its longest entry, two blanks between. Entries are to be safe to
// print.
class Table {
 public:
  explicit Table(std::vector<std::string> heads) : m_rows{std::move(heads)} {}
  void Add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }
  bool IsEmpty() const { return m_rows.size() == 1; }
  std::string Text() const;

 private:
  std::vector<std::vector<std::string>> m_rows;
};

}  // namespace host
