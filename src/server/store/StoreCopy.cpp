// SPDX-License-Identifier: Apache-2.0
#include "server/store/StoreCopy.h"

#include <SQLiteCpp/Backup.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace server {

namespace {

constexpr int kCopyWaitMs = 5000;  // for a lock

}  // namespace

void CopyStore(const std::string& from, const std::string& to) {
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

void SyncFolderOf(const std::string& file) {
  const std::string folder = std::filesystem::path(file).parent_path().string();
  const int opened = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  fsync(opened);
  close(opened);
}

}  // namespace server
