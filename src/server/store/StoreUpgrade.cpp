// SPDX-License-Identifier: Apache-2.0
#include "server/store/StoreUpgrade.h"

#include <SQLiteCpp/Backup.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <vector>

#include "server/documents/Requests.h"

namespace server {

namespace {

constexpr int kUpgradeWaitMs = 60000;  // for another process that upgrades the same store

// An object whose changes are all dropped gets the number of the last dropped change.
const char kUpgrade[] = R"sql(
ALTER TABLE groups ADD COLUMN change_number INTEGER NOT NULL DEFAULT 0;
ALTER TABLE views ADD COLUMN change_number INTEGER NOT NULL DEFAULT 0;
UPDATE groups SET change_number = (
  SELECT coalesce(min(number) - 1, (SELECT seq FROM sqlite_sequence WHERE name = 'changes'), 0) FROM changes);
UPDATE views SET change_number = (
  SELECT coalesce(min(number) - 1, (SELECT seq FROM sqlite_sequence WHERE name = 'changes'), 0) FROM changes);
UPDATE groups SET change_number = last.number
  FROM (SELECT object_id, max(number) AS number FROM changes WHERE kind = 1 GROUP BY object_id) AS last
  WHERE last.object_id = groups.id;
UPDATE views SET change_number = last.number
  FROM (SELECT object_id, max(number) AS number FROM changes WHERE kind = 2 GROUP BY object_id) AS last
  WHERE last.object_id = views.id;
UPDATE changes SET head = head || ',"ChangeNumber":"' || number || '"' WHERE head <> '';
UPDATE changes SET shared_head = shared_head || ',"ChangeNumber":"' || number || '"' WHERE shared_head <> '';
PRAGMA user_version=2;
)sql";

// A copy of a store that nobody writes meanwhile; gone with this object unless it is kept. It is made under another
// name, so that what stands under its own is whole even where the process gets killed.
class StoreCopy {
 public:
  explicit StoreCopy(const std::string& file) : m_name(FreeName(file + ".v1")), m_part(file + ".v1-part") {
    RemovePart();
    try {
      Write(file);
      if (std::rename(m_part.c_str(), m_name.c_str()) != 0) throw std::runtime_error(std::strerror(errno));
    } catch (const std::exception& e) {
      RemovePart();
      throw std::runtime_error("cannot upgrade " + file + ": cannot copy it to " + m_name + ": " + e.what());
    }
    SyncFolder();
  }
  ~StoreCopy() {
    if (!m_kept) unlink(m_name.c_str());
  }
  StoreCopy(const StoreCopy&) = delete;
  StoreCopy& operator=(const StoreCopy&) = delete;

  const std::string& Name() const { return m_name; }
  void Keep() { m_kept = true; }

 private:
  static std::string FreeName(const std::string& wanted) {
    std::string name = wanted;
    for (int n = 2; std::filesystem::symlink_status(name).type() != std::filesystem::file_type::not_found; ++n) {
      name = wanted + "-" + std::to_string(n);
    }
    return name;
  }

  void Write(const std::string& file) {
    // It holds the hashes of passwords and tokens, as the store does.
    const int made = open(m_part.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (made < 0) throw std::runtime_error(std::strerror(errno));
    close(made);
    // Not by the connection that holds the transaction: SQLite copies nothing that is being written.
    SQLite::Database source(file, SQLite::OPEN_READONLY);
    SQLite::Database copy(m_part, SQLite::OPEN_READWRITE);
    SQLite::Backup backup(copy, source);
    const int result = backup.executeStep();
    if (result != SQLITE_DONE) throw std::runtime_error(sqlite3_errstr(result));
  }

  // What failed, or what a process left that was killed.
  void RemovePart() const {
    unlink(m_part.c_str());
    unlink((m_part + "-journal").c_str());
  }

  // So that no power cut leaves the new store without the old one.
  void SyncFolder() const {
    const std::string folder = std::filesystem::path(m_name).parent_path().string();
    const int opened = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return;
    fsync(opened);
    close(opened);
  }

  const std::string m_name, m_part;
  bool m_kept = false;
};

// Clients could write a member of their own under the name that is the server's now.
void DropClientsNumbers(SQLite::Database& database) {
  std::vector<std::pair<int64_t, std::string>> documents;
  SQLite::Statement found(database, R"sql(SELECT id, text FROM documents WHERE instr(text, '"ChangeNumber":') > 0)sql");
  while (found.executeStep()) documents.emplace_back(found.getColumn(0).getInt64(), found.getColumn(1).getString());
  SQLite::Statement update(database, "UPDATE documents SET text = ? WHERE id = ?");
  for (const auto& [id, text] : documents) {
    update.bind(1, WithoutServersOwn(text));
    update.bind(2, id);
    update.exec();
    update.reset();
  }
}

}  // namespace

int UpgradeStore(SQLite::Database& database, const std::string& file) {
  database.setBusyTimeout(kUpgradeWaitMs);
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
  const int version = database.execAndGet("PRAGMA user_version").getInt();
  if (version != 1) return version;
  StoreCopy copy(file);
  database.exec(kUpgrade);
  DropClientsNumbers(database);
  transaction.commit();
  copy.Keep();
  std::fprintf(stderr, "viewserver: %s is now a store of version 2; as it was it stands in %s\n", file.c_str(),
               copy.Name().c_str());
  return 2;
}

}  // namespace server
