// SPDX-License-Identifier: Apache-2.0
#include "host/Table.h"

#include <algorithm>

#include "host/Look.h"

namespace host {
namespace {

// In characters: what takes two columns of a terminal is rare in what stands before another column.
size_t Width(const std::string& text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string Table::Text() const {
  std::vector<size_t> widths(m_rows.front().size());
  for (const auto& row : m_rows) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  }
  std::string text;
  for (const auto& row : m_rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      if (i + 1 < row.size()) line.append(widths[i] - Width(row[i]) + 2, ' ');
    }
    text += (&row == &m_rows.front() ? StyledOut(Style::kHead, line) : line) + "\n";
  }
  return text;
}

}  // namespace host
