// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/base/JsonWriter.h"

#include <charconv>

namespace QorviViewPlugin {
namespace {

bool NeedsEscape(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

}  // namespace

void JsonWriter::Separate() {
  if (m_text.empty()) return;
  const char last = m_text.back();
  if (last != '{' && last != '[' && last != ':') m_text += ',';
}

void JsonWriter::Key(std::string_view name) {
  Separate();
  m_text += '"';
  m_text.append(name);
  m_text.append("\":", 2);
}

void JsonWriter::Int(int value) {
  Separate();
  char digits[16];
  m_text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void JsonWriter::Bool(bool value) {
  Separate();
  m_text += value ? "true" : "false";
}

void JsonWriter::String(std::string_view text) {
  Separate();
  m_text += '"';
  size_t plainFrom = 0;
  for (size_t at = 0; at < text.size(); ++at) {
    if (!NeedsEscape(text[at])) continue;
    m_text.append(text, plainFrom, at - plainFrom);
    AppendEscaped(text[at]);
    plainFrom = at + 1;
  }
  m_text.append(text, plainFrom);
  m_text += '"';
}

void JsonWriter::AppendEscaped(char c) {
  static constexpr std::string_view kNamed = "\b\f\n\r\t\"\\";
  static constexpr std::string_view kNames = "bfnrt\"\\";
  static constexpr char kHex[] = "0123456789ABCDEF";
  m_text += '\\';
  if (const size_t named = kNamed.find(c); named != std::string_view::npos) {
    m_text += kNames[named];
    return;
  }
  m_text.append("u00");
  m_text += kHex[c >> 4];
  m_text += kHex[c & 0xF];
}

}  // namespace QorviViewPlugin
