// SPDX-License-Identifier: Apache-2.0
#include "base/system/Console.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "base/windows/Text.h"

namespace base {

namespace {

constexpr wchar_t kInterrupt = 3;  // Ctrl-C, where nobody makes an event of it
constexpr wchar_t kBackspace = 8;

HANDLE StreamHandle(Stream stream) {
  constexpr DWORD kHandles[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  return GetStdHandle(kHandles[static_cast<int>(stream)]);
}

// As long as it lives, each key is told as it is pressed, and shown to nobody.
class SilentConsole {
 public:
  SilentConsole() {
    GetConsoleMode(m_input, &m_before);
    SetConsoleMode(m_input, m_before & ~DWORD{ENABLE_ECHO_INPUT | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT});
    FlushConsoleInputBuffer(m_input);
  }
  ~SilentConsole() { SetConsoleMode(m_input, m_before); }
  SilentConsole(const SilentConsole&) = delete;
  SilentConsole& operator=(const SilentConsole&) = delete;

  // Nothing where no more will come.
  std::optional<wchar_t> Key() const {
    wchar_t key = 0;
    DWORD count = 0;
    return ReadConsoleW(m_input, &key, 1, &count, nullptr) && count == 1 ? std::optional(key) : std::nullopt;
  }

 private:
  const HANDLE m_input = StreamHandle(Stream::kIn);
  DWORD m_before = 0;
};

}  // namespace

void PrepareStreams() {
  for (FILE* const stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  // As elsewhere: what is said is there at once, also for a program that reads it from a pipe.
  setvbuf(stderr, nullptr, _IONBF, 0);
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleCP(CP_UTF8);
  for (const Stream stream : {Stream::kOut, Stream::kErr}) {
    DWORD mode = 0;
    const HANDLE handle = StreamHandle(stream);
    if (GetConsoleMode(handle, &mode)) SetConsoleMode(handle, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
}

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(StreamHandle(stream), &mode) != 0;
}

int ColumnsOf(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(StreamHandle(stream), &info)) return 0;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

bool HasColours(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(StreamHandle(stream), &mode) && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

std::optional<std::string> ReadUnseen(const std::string& question) {
  const SilentConsole console;
  std::fputs(question.c_str(), stderr);
  std::wstring line;
  while (const std::optional<wchar_t> key = console.Key()) {
    if (*key == kInterrupt) return std::string();
    if (*key == L'\r' || *key == L'\n') break;
    if (*key != kBackspace) {
      line += *key;
    } else if (!line.empty()) {
      line.pop_back();
    }
  }
  return ToUtf8(line);
}

}  // namespace base
