// SPDX-License-Identifier: Apache-2.0
#include "base/windows/Text.h"

#include <windows.h>

namespace base {

std::wstring ToWide(std::string_view utf8) {
  const int size = static_cast<int>(utf8.size());
  std::wstring wide(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0)), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string ToUtf8(std::wstring_view wide) {
  const int size = static_cast<int>(wide.size());
  const int needed = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), needed, nullptr, nullptr);
  return utf8;
}

}  // namespace base
