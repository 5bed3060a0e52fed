// SPDX-License-Identifier: Apache-2.0
#include "host/complete/Line.h"

#include <algorithm>

namespace host {
namespace {

class Splitter {
 public:
  std::vector<std::string> Split(std::string_view line) {
    for (size_t i = 0; i < line.size(); ++i) {
      const char c = line[i];
      if (c == '\\' && i + 1 < line.size() && IsEscape(line[i + 1])) {
        m_words.back() += line[++i];
      } else if (m_quote != 0) {
        TakeQuoted(c);
      } else {
        TakeBare(c);
      }
    }
    return std::move(m_words);
  }

 private:
  // Whether a backslash before it says that it means itself.
  bool IsEscape(char next) const {
    return m_quote == 0 || (m_quote == '"' && std::string_view("\"\\$`").find(next) != std::string_view::npos);
  }

  void TakeQuoted(char c) {
    if (c == m_quote) {
      m_quote = 0;
    } else {
      m_words.back() += c;
    }
  }

  void TakeBare(char c) {
    const bool isBlank = c == ' ' || c == '\t' || c == '\n';
    if (c == '\'' || c == '"') {
      m_quote = c;
    } else if (!isBlank) {
      m_words.back() += c;
    } else if (!m_wasBlank) {
      m_words.emplace_back();
    }
    m_wasBlank = isBlank;
  }

  std::vector<std::string> m_words{1};
  char m_quote = 0;
  bool m_wasBlank = true;
};

}  // namespace

bool CanBeTyped(std::string_view text) {
  return std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

std::vector<std::string> SplitLine(std::string_view line) {
  return Splitter().Split(line);
}

}  // namespace host
