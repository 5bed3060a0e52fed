// SPDX-License-Identifier: Apache-2.0
#include "server/store/StoreUpgrade.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <cstdio>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/system/Files.h"
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

// The store as it was; gone with this object unless it is kept.
class Former {
 public:
  // `wanted`: its name, or what its name begins with where that is taken.
  Former(const std::string& file, const std::string& wanted) : m_name(FreeName(wanted)) {
    // Not by the connection that holds the transaction: SQLite copies nothing that is being written. On the disk, so
    // that no power cut leaves the new store without the old one.
    try {
      StoreCopy(file, wanted).Become(m_name);
    } catch (const std::exception& e) {
      throw std::runtime_error("cannot upgrade " + file + ": " + e.what());
    }
  }
  ~Former() {
    if (!m_isKept) base::RemoveFile(m_name);
  }
  Former(const Former&) = delete;
  Former& operator=(const Former&) = delete;

  const std::string& Name() const { return m_name; }
  void Keep() { m_isKept = true; }

 private:
  const std::string m_name;
  bool m_isKept = false;
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
  Former former(file, file + ".v" + std::to_string(version));
  if (version == 1) {
    database.exec(kToVersion2);
    DropClientsNumbers(database);
  }
  database.exec(kToVersion3);
  transaction.commit();
  former.Keep();
  std::fprintf(stderr, "viewserver: %s is now a store of version 3; as it was it stands in %s\n", file.c_str(),
               former.Name().c_str());
  return 3;
}

}  // namespace server
