// SPDX-License-Identifier: Apache-2.0
#include "base/system/Process.h"

// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include "base/windows/Text.h"

namespace base {

namespace {

// What main is given is of the system's code page, which has not all characters.
std::vector<std::string> ArgumentTexts() {
  int count = 0;
  LPWSTR* const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> texts;
  for (int i = 0; i < count; ++i) texts.push_back(ToUtf8(arguments[i]));
  LocalFree(arguments);
  return texts;
}

}  // namespace

std::vector<const char*> Arguments(int, char**) {
  static const std::vector<std::string> texts = ArgumentTexts();
  std::vector<const char*> arguments;
  for (const std::string& text : texts) arguments.push_back(text.c_str());
  return arguments;
}

std::optional<std::string> Environment(const char* name) {
  const std::wstring wideName = ToWide(name);
  std::wstring value(32767, L'\0');  // the longest there is
  SetLastError(ERROR_SUCCESS);
  const DWORD size = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
  if (size == 0 && GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
  value.resize(size);
  return ToUtf8(value);
}

std::optional<std::uint64_t> RaiseOpenFiles() {
  return std::nullopt;
}

}  // namespace base
