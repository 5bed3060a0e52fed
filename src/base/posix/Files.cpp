// SPDX-License-Identifier: Apache-2.0
#include "base/system/Files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace base {

namespace {

// The owner of that file, where this process may give files away and there is one.
bool OwnerOf(const std::string& file, struct stat& owned) {
  return geteuid() == 0 && stat(file.c_str(), &owned) == 0;
}

// Puts on the disk which files there are beside that one.
void SyncFolderOf(const std::string& file) {
  const std::string folder = NameOf(PathOf(file).parent_path());
  const int opened = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  fsync(opened);
  close(opened);
}

int OpenToAppend(const std::string& file) {
  return open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0640);
}

}  // namespace

std::error_code MakePrivateFile(const std::string& file) {
  const int made = open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (made < 0) return {errno, std::generic_category()};
  close(made);
  return {};
}

std::string MakeTemporaryFolder(const std::string& prefix) {
  std::string folder = NameOf(std::filesystem::temp_directory_path() / PathOf(prefix + "XXXXXX"));
  return mkdtemp(folder.data()) ? folder : std::string();
}

void RemoveFile(const std::string& file) noexcept {
  unlink(file.c_str());
}

void PutInPlace(const std::string& from, const std::string& to) {
  std::filesystem::rename(PathOf(from), PathOf(to));
  SyncFolderOf(to);
}

std::error_code GiveToOwnerOf(const std::string& owned, const std::string& file) {
  struct stat status {};
  if (!OwnerOf(owned, status) || chown(file.c_str(), status.st_uid, status.st_gid) == 0) return {};
  return {errno, std::generic_category()};
}

HeldFile::~HeldFile() {
  if (m_handle >= 0) close(static_cast<int>(m_handle));
}

HeldFile::Outcome HeldFile::Hold(const std::string& file, const std::string& owned) {
  const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor < 0) return Outcome::kCannotBeMade;
  struct stat status {};
  if (OwnerOf(owned, status) && fchown(descriptor, status.st_uid, status.st_gid) != 0) {
    // It stays the superuser's.
  }
  if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    close(descriptor);
    return Outcome::kHeldByAnother;
  }
  m_handle = descriptor;
  return Outcome::kHeld;
}

AppendedFile::AppendedFile(const std::string& file)
    : m_handle(file == "-" ? STDERR_FILENO : OpenToAppend(file)), m_isOwn(m_handle >= 0 && file != "-") {}

AppendedFile::~AppendedFile() {
  if (m_isOwn) close(static_cast<int>(m_handle));
}

bool AppendedFile::AwaitSpace(int milliseconds) const {
  pollfd writable{static_cast<int>(m_handle), POLLOUT, 0};
  return poll(&writable, 1, milliseconds) > 0;
}

std::int64_t AppendedFile::Write(std::string_view text) const {
  return write(static_cast<int>(m_handle), text.data(), std::min<size_t>(text.size(), PIPE_BUF));
}

}  // namespace base
