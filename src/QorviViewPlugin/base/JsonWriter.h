// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace QorviViewPlugin {

// Writes compact JSON, byte for byte as RapidJSON's Writer does, straight into a text. The calls must come in an order
// that makes JSON; commas come by themselves. One thread at a time.
class JsonWriter {
 public:
  // About how long the text will be; it may become longer.
  explicit JsonWriter(std::size_t expectedSize = 0) : m_text(expectedSize, '\0') {}

  void BeginObject() { Begin('{'); }
  void EndObject() { End('}'); }
  void BeginArray() { Begin('['); }
  void EndArray() { End(']'); }
  // REQUIRES: nothing in the name has to be escaped.
  void Key(std::string_view name) {
    char* at = Separated(name.size() + 3);
    *at++ = '"';
    std::memcpy(at, name.data(), name.size());
    at += name.size();
    *at++ = '"';
    *at++ = ':';
    Close(at, false);
  }
  void Int(int value) {
    char* const at = Separated(kMostDigits);
    Close(std::to_chars(at, at + kMostDigits, value).ptr, true);
  }
  void Bool(bool value) { Word(value ? "true" : "false"); }
  void String(std::string_view text);

  std::string Take() {
    m_text.resize(m_size);
    return std::move(m_text);
  }

 private:
  static constexpr std::size_t kMostDigits = 11;  // and a sign

  // Where the next value or name of that many characters goes, behind its comma.
  char* Separated(std::size_t size) {
    char* at = Room(size + 1);
    if (m_needsComma) *at++ = ',';
    return at;
  }
  char* Room(std::size_t size) {
    if (m_text.size() - m_size < size) Grow(size);
    return m_text.data() + m_size;
  }
  void Close(const char* end, bool needsComma) {
    m_size = static_cast<std::size_t>(end - m_text.data());
    m_needsComma = needsComma;
  }
  void Begin(char bracket) {
    char* const at = Separated(1);
    *at = bracket;
    Close(at + 1, false);
  }
  void End(char bracket) {
    m_needsComma = false;
    Begin(bracket);
    m_needsComma = true;
  }
  void Word(std::string_view word) {
    char* const at = Separated(word.size());
    std::memcpy(at, word.data(), word.size());
    Close(at + word.size(), true);
  }
  void Grow(std::size_t size);
  // With room for a quote behind it.
  char* CopyEscaped(char* to, const char* at, const char* end);

  std::string m_text;  // of which the first m_size characters are written
  std::size_t m_size = 0;
  bool m_needsComma = false;  // before what comes next
};

}  // namespace QorviViewPlugin
