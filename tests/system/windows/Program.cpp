// SPDX-License-Identifier: Apache-2.0
#include "system/Program.h"

#include <windows.h>

#include <chrono>
#include <stdexcept>
#include <thread>

#include "base/windows/Text.h"

namespace test_programs {

struct Program::Process {
  HANDLE handle = nullptr;
  HANDLE output = nullptr;
  DWORD id = 0;
};

namespace {

// So that the program's main is given what was meant.
std::wstring Quoted(const std::wstring& argument) {
  std::wstring quoted = L"\"";
  std::size_t slashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') quoted.append(slashes + 1, L'\\');
    slashes = c == L'\\' ? slashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(slashes, L'\\') + L'"';
}

}  // namespace

bool AskToStop(int64_t process) {
  return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, static_cast<DWORD>(process)) != 0;
}

std::uint32_t FlagsOfStoppable(std::uint32_t flags) {
  if (GetConsoleCP() == 0) AllocConsole();
  return (flags & ~static_cast<std::uint32_t>(CREATE_NO_WINDOW)) | CREATE_NEW_PROCESS_GROUP;
}

Program::Program(const std::vector<std::string>& command) : m_process(std::make_unique<Process>()) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE written = nullptr;
  if (!CreatePipe(&m_process->output, &written, &inherited, 0)) throw std::runtime_error("no pipe");
  SetHandleInformation(m_process->output, HANDLE_FLAG_INHERIT, 0);
  std::wstring line;
  for (const std::string& argument : command) line += (line.empty() ? L"" : L" ") + Quoted(base::ToWide(argument));
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = written;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION made{};
  const bool isMade = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, FlagsOfStoppable(0), nullptr,
                                     nullptr, &startup, &made);
  CloseHandle(written);
  if (!isMade) throw std::runtime_error(command[0] + " cannot be started");
  CloseHandle(made.hThread);
  m_process->handle = made.hProcess;
  m_process->id = made.dwProcessId;
}

Program::~Program() {
  const bool isAsked = !HasEnded() && AskToStop(Id());
  for (int i = 0; isAsked && i < 1000 && !HasEnded(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  if (!HasEnded()) TerminateProcess(m_process->handle, 1);
  CloseHandle(m_process->handle);
  CloseHandle(m_process->output);
}

int64_t Program::Id() const {
  return m_process->id;
}

bool Program::HasEnded() {
  return WaitForSingleObject(m_process->handle, 0) == WAIT_OBJECT_0;
}

std::string Program::Line() {
  std::string line;
  const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (line.empty() || line.back() != '\n') {
    DWORD count = 0;
    if (!PeekNamedPipe(m_process->output, nullptr, 0, nullptr, &count, nullptr)) break;
    if (count == 0) {
      if (std::chrono::steady_clock::now() > limit) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      continue;
    }
    char c = 0;
    if (!ReadFile(m_process->output, &c, 1, &count, nullptr) || count == 0) break;
    line += c;
  }
  return line;
}

}  // namespace test_programs
