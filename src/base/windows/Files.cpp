// SPDX-License-Identifier: Apache-2.0
#include "base/system/Files.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <random>

#include "base/windows/Text.h"

namespace base {

namespace {

constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::intptr_t HandleOf(HANDLE handle) {
  return reinterpret_cast<std::intptr_t>(handle);  // -1 is INVALID_HANDLE_VALUE
}

HANDLE AsHandle(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

std::error_code LastError() {
  return {static_cast<int>(GetLastError()), std::system_category()};
}

HANDLE Open(const std::string& file, DWORD access, DWORD disposition) {
  return CreateFileW(PathOf(file).c_str(), access, kShared, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::string RandomName() {
  std::random_device random;
  std::array<char, 20> name{};
  std::snprintf(name.data(), name.size(), "%08x%08x", random(), random());
  return name.data();
}

}  // namespace

std::error_code MakePrivateFile(const std::string& file) {
  const HANDLE made = Open(file, GENERIC_READ | GENERIC_WRITE, CREATE_NEW);
  if (made == INVALID_HANDLE_VALUE) return LastError();
  CloseHandle(made);
  return {};
}

std::string MakeTemporaryFolder(const std::string& prefix) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / PathOf(prefix + RandomName());
  return CreateDirectoryW(folder.c_str(), nullptr) ? NameOf(folder) : std::string();
}

void RemoveFile(const std::string& file) noexcept {
  DeleteFileW(PathOf(file).c_str());
}

void PutInPlace(const std::string& from, const std::string& to) {
  const HANDLE written = Open(from, GENERIC_WRITE, OPEN_EXISTING);
  if (written != INVALID_HANDLE_VALUE) {
    FlushFileBuffers(written);
    CloseHandle(written);
  }
  if (MoveFileExW(PathOf(from).c_str(), PathOf(to).c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return;
  const std::error_code error = LastError();
  const bool isInUse = error.value() == ERROR_SHARING_VIOLATION || error.value() == ERROR_ACCESS_DENIED;
  throw std::system_error(
      error, "cannot give " + from + " the name " + to + (isInUse ? ", which another program may be using" : ""));
}

std::error_code GiveToOwnerOf(const std::string&, const std::string&) {
  return {};
}

HeldFile::~HeldFile() {
  if (m_handle != -1) CloseHandle(AsHandle(m_handle));
}

HeldFile::Outcome HeldFile::Hold(const std::string& file, const std::string&) {
  const HANDLE handle = Open(file, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
  if (handle == INVALID_HANDLE_VALUE) {
    return GetLastError() == ERROR_SHARING_VIOLATION ? Outcome::kHeldByAnother : Outcome::kCannotBeMade;
  }
  OVERLAPPED range{};
  if (!LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range)) {
    CloseHandle(handle);
    return Outcome::kHeldByAnother;
  }
  m_handle = HandleOf(handle);
  return Outcome::kHeld;
}

AppendedFile::AppendedFile(const std::string& file)
    : m_handle(HandleOf(file == "-" ? GetStdHandle(STD_ERROR_HANDLE) : Open(file, FILE_APPEND_DATA, OPEN_ALWAYS))),
      m_isOwn(m_handle != -1 && file != "-") {}

AppendedFile::~AppendedFile() {
  if (m_isOwn) CloseHandle(AsHandle(m_handle));
}

bool AppendedFile::AwaitSpace(int) const {
  return true;
}

std::int64_t AppendedFile::Write(std::string_view text) const {
  DWORD written = 0;
  if (!WriteFile(AsHandle(m_handle), text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) return -1;
  return written;
}

}  // namespace base
