// SPDX-License-Identifier: Apache-2.0
#include "server/store/StoreCopy.h"

#include <SQLiteCpp/Backup.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace server {

namespace {

constexpr int kCopyWaitMs = 5000;  // for a lock

void Copy(const std::string& from, const std::string& to) {
  // It holds the hashes of passwords and tokens, as the store does.
  const int made = open(to.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (made < 0) throw std::runtime_error(std::strerror(errno));
  close(made);
  SQLite::Database source(from, SQLite::OPEN_READWRITE, kCopyWaitMs);  // it is only read
  SQLite::Database copy(to, SQLite::OPEN_READWRITE);
  SQLite::Backup backup(copy, source);
  const int result = backup.executeStep();
  if (result != SQLITE_DONE) throw std::runtime_error(sqlite3_errstr(result));
}

// Puts on the disk which files there are beside that one.
void SyncFolderOf(const std::string& file) {
  const std::string folder = std::filesystem::path(file).parent_path().string();
  const int opened = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  fsync(opened);
  close(opened);
}

}  // namespace

StoreCopy::StoreCopy(const std::string& from, const std::string& to) : m_part(to + "-part") {
  Remove();  // what a process left that was killed
  try {
    Copy(from, m_part);
  } catch (const std::exception& e) {
    Remove();
    throw std::runtime_error("cannot copy " + from + " to " + m_part + ": " + e.what());
  }
}

StoreCopy::~StoreCopy() {
  Remove();
}

void StoreCopy::GiveToOwnerOf(const std::string& file) const {
  struct stat owned {};
  if (geteuid() != 0 || stat(file.c_str(), &owned) != 0) return;
  if (chown(m_part.c_str(), owned.st_uid, owned.st_gid) != 0) throw std::runtime_error(std::strerror(errno));
}

void StoreCopy::Become(const std::string& file) const {
  std::filesystem::rename(m_part, file);
  SyncFolderOf(file);
}

void StoreCopy::Remove() const {
  unlink(m_part.c_str());  // files only: a folder of that name is somebody's
  unlink((m_part + "-journal").c_str());
}

}  // namespace server
