// SPDX-License-Identifier: Apache-2.0
// What the fuzz targets share: taking an input apart, a check that stops the fuzzer, and a quiet library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace fuzz {

// Stops the fuzzer, which keeps the input, with one line on stderr.
[[noreturn]] inline void Fail(const char* what, std::string_view detail = {}) {
  std::fprintf(stderr, "fuzz: %s: %.*s\n", what, static_cast<int>(detail.size()), detail.data());
  std::abort();
}
inline void Require(bool holds, const char* what, std::string_view detail = {}) {
  if (!holds) Fail(what, detail);
}

// An input read from front to back. Behind its end everything is zero and empty.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

  bool AtEnd() const { return m_rest.empty(); }
  unsigned int Byte() {
    if (m_rest.empty()) return 0;
    const auto byte = static_cast<unsigned char>(m_rest.front());
    m_rest.remove_prefix(1);
    return byte;
  }
  // Up to the next separator or the end; the separator is a byte that UTF-8 never holds.
  std::string Text() {
    const size_t end = m_rest.find('\xff');
    std::string text(m_rest.substr(0, end));
    m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
    return text;
  }

 private:
  std::string_view m_rest;
};

}  // namespace fuzz
