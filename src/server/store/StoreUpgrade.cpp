// SPDX-License-Identifier: Apache-2.0
#include "server/store/StoreUpgrade.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "server/documents/Requests.h"
#include "server/store/StoreCopy.h"
#include "server/store/StoreIdentity.h"

namespace server {

namespace {

constexpr int kUpgradeWaitMs = 60000;  // for another process that upgrades the same store

// An object whose changes are all dropped gets the number of the last dropped change.
const char kToVersion2[] = R"sql(
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

// A document's bytes count for the first change that has it.
const char kToVersion3[] = R"sql(
ALTER TABLE changes ADD COLUMN bytes INTEGER NOT NULL DEFAULT 0;
CREATE TABLE epochs (number INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL, first_change INTEGER NOT NULL);
UPDATE changes SET bytes = coalesce(length(before) + length(after) + length(head) + length(shared_head), 0);
UPDATE changes SET bytes = bytes + first.length
  FROM (SELECT min(c.number) AS number, coalesce(length(CAST(d.text AS BLOB)), 0) AS length
        FROM changes c JOIN documents d ON d.id = c.document_id GROUP BY d.id) AS first
  WHERE first.number = changes.number;
PRAGMA user_version=3;
)sql";

// A copy of a store that nobody writes meanwhile; gone with this object unless it is kept. It is made under another
// name, so that what stands under its own is whole even where the process gets killed.
class StoreCopy {
 public:
  // `version` is the store's.
  StoreCopy(const std::string& file, int version)
      : m_name(FreeName(file + ".v" + std::to_string(version))),
        m_part(file + ".v" + std::to_string(version) + "-part") {
    RemovePart();
    try {
      // Not by the connection that holds the transaction: SQLite copies nothing that is being written.
      CopyStore(file, m_part);
      if (std::rename(m_part.c_str(), m_name.c_str()) != 0) throw std::runtime_error(std::strerror(errno));
    } catch (const std::exception& e) {
      RemovePart();
      throw std::runtime_error("cannot upgrade " + file + ": cannot copy it to " + m_name + ": " + e.what());
    }
    SyncFolderOf(m_name);  // so that no power cut leaves the new store without the old one
  }
  ~StoreCopy() {
    if (!m_kept) unlink(m_name.c_str());
  }
  StoreCopy(const StoreCopy&) = delete;
  StoreCopy& operator=(const StoreCopy&) = delete;

  const std::string& Name() const { return m_name; }
  void Keep() { m_kept = true; }

 private:
  // What failed, or what a process left that was killed.
  void RemovePart() const {
    unlink(m_part.c_str());
    unlink((m_part + "-journal").c_str());
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
  if (version != 1 && version != 2) return version;
  StoreCopy copy(file, version);
  if (version == 1) {
    database.exec(kToVersion2);
    DropClientsNumbers(database);
  }
  database.exec(kToVersion3);
  transaction.commit();
  copy.Keep();
  std::fprintf(stderr, "viewserver: %s is now a store of version 3; as it was it stands in %s\n", file.c_str(),
               copy.Name().c_str());
  return 3;
}

}  // namespace server
