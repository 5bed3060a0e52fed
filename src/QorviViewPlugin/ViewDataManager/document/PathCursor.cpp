// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"

#include <charconv>

namespace QorviViewPlugin {

PathCursor::Level PathCursor::Enter(std::string_view key, int n) {
  const size_t outerLength = m_length;
  char digits[16];
  const char* const end = std::to_chars(digits, digits + sizeof digits, n).ptr;
  Full(key);
  m_path.append("[").append(digits, static_cast<size_t>(end - digits)).append("]/");
  m_length = m_path.size();
  return Level(*this, outerLength);
}

PathCursor::Level PathCursor::Enter(std::string_view key) {
  const size_t outerLength = m_length;
  Full(key);
  m_path.append("/");
  m_length = m_path.size();
  return Level(*this, outerLength);
}

std::string_view PathCursor::Full(std::string_view key) {
  m_path.resize(m_length);
  m_path.append(key);
  return m_path;
}

}  // namespace QorviViewPlugin
