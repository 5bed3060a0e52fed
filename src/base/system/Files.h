// SPDX-License-Identifier: Apache-2.0
// Files of programs. Their names are UTF-8, as all texts are; on Linux any bytes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace base {

std::filesystem::path PathOf(const std::string& name);
std::string NameOf(const std::filesystem::path& path);

// Makes a file that is not there yet. Its owner alone may read it; on Windows whoever its folder lets.
std::error_code MakePrivateFile(const std::string& file);
// Makes a folder that nobody else may enter, of a new name among the temporary files; on Windows those are the user's
// own. Empty where that fails.
std::string MakeTemporaryFolder(const std::string& prefix);
// What is a folder stays.
void RemoveFile(const std::string& file) noexcept;
// Gives `from` the name `to`, in the place of what has it, and puts that on the disk. Throws std::system_error: on
// Windows also while a program has either open.
void PutInPlace(const std::string& from, const std::string& to);
// Where a superuser asks and there is `owned`, its owner becomes that of `file`. Nothing on Windows.
std::error_code GiveToOwnerOf(const std::string& owned, const std::string& file);

// A file that one process at a time may hold. It is free again with the object, and with the process however that ends.
class HeldFile {
 public:
  enum class Outcome { kHeld, kHeldByAnother, kCannotBeMade };

  HeldFile() = default;
  ~HeldFile();
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

  // Makes the file where it is not there, with the owner of `owned` as GiveToOwnerOf does. REQUIRES: it holds none.
  Outcome Hold(const std::string& file, const std::string& owned);

 private:
  std::intptr_t m_handle = -1;
};

// A log that programs outside may read as it grows: a file that is appended to, a pipe, a terminal.
class AppendedFile {
 public:
  // "-" is stderr.
  explicit AppendedFile(const std::string& file);
  ~AppendedFile();
  AppendedFile(const AppendedFile&) = delete;
  AppendedFile& operator=(const AppendedFile&) = delete;

  bool IsOpen() const { return m_handle != -1; }
  // Whether Write will take something without waiting for who reads it, once it has waited so long for that; on Windows
  // it says so at once, and Write waits.
  bool AwaitSpace(int milliseconds) const;
  // How many bytes it took; -1 where none will ever be taken.
  std::int64_t Write(std::string_view text) const;

 private:
  std::intptr_t m_handle = -1;
  bool m_isOwn = false;
};

}  // namespace base
