// SPDX-License-Identifier: Apache-2.0
#include "server/store/StoreCopy.h"

#include <SQLiteCpp/Backup.h>
#include <sqlite3.h>

#include <stdexcept>

#include "base/system/Files.h"

namespace server {

namespace {

constexpr int kCopyWaitMs = 5000;  // for a lock

void Copy(const std::string& from, const std::string& to) {
  // It holds the hashes of passwords and tokens, as the store does.
  if (const std::error_code error = base::MakePrivateFile(to)) throw std::runtime_error(error.message());
  SQLite::Database source(from, SQLite::OPEN_READWRITE, kCopyWaitMs);  // it is only read
  SQLite::Database copy(to, SQLite::OPEN_READWRITE);
  SQLite::Backup backup(copy, source);
  const int result = backup.executeStep();
  if (result != SQLITE_DONE) throw std::runtime_error(sqlite3_errstr(result));
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
  if (const std::error_code error = base::GiveToOwnerOf(file, m_part)) throw std::runtime_error(error.message());
}

void StoreCopy::Become(const std::string& file) const {
  base::PutInPlace(m_part, file);
}

void StoreCopy::Remove() const {
  base::RemoveFile(m_part);  // files only: a folder of that name is somebody's
  base::RemoveFile(m_part + "-journal");
}

}  // namespace server
