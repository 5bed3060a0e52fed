// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace QorviViewPlugin {

// Writes compact JSON, byte for byte as RapidJSON's Writer does, straight into a text. The calls must come in an order
// that makes JSON; commas come by themselves. One thread at a time.
class JsonWriter {
 public:
  void BeginObject() { Begin('{'); }
  void EndObject() { m_text += '}'; }
  void BeginArray() { Begin('['); }
  void EndArray() { m_text += ']'; }
  // REQUIRES: nothing in the name has to be escaped.
  void Key(std::string_view name);
  void Int(int value);
  void Bool(bool value);
  void String(std::string_view text);

  std::string Take() { return std::move(m_text); }

 private:
  void Begin(char bracket) {
    Separate();
    m_text += bracket;
  }
  // The comma between this value or name and the one before it.
  void Separate();
  void AppendEscaped(char c);

  std::string m_text;
};

}  // namespace QorviViewPlugin
