// SPDX-License-Identifier: Apache-2.0
// The SQLite file: its schema, its settings, and statements that are prepared once. What is committed outlasts a power
// cut. Not thread-safe: its owner locks. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "server/store/TemporaryFolder.h"

namespace server {

class Database {
 public:
  // kAccounts: for users and sessions only. Their tables are the same in every version, so that a store of an earlier
  // one stays as it is, and a server of that version may be using it. kKnownAccounts: likewise, of a store that there
  // is. kReading: nothing is written, and there must be a store.
  enum class Use { kSite, kAccounts, kKnownAccounts, kReading };

  // Opens or makes the file (":memory:" is one of its own that goes with the last connection); for kSite upgrades what
  // an earlier server wrote. Throws std::runtime_error with one plain line when it is not a usable store, or none of
  // this server; nothing has been changed then.
  explicit Database(const std::string& file, Use use = Use::kSite);

  // A second connection to a store, for reading only: it waits for nobody who writes.
  struct Reading {};
  Database(const Database& store, Reading);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  SQLite::Database& Handle() { return m_database; }
  SQLite::Statement& Prepared(const char* sql);
  bool IsCurrent() const;  // not of an earlier version, which kSite alone upgrades

  // From now on a transaction that finds another process writing fails at once, with SQLITE_BUSY, and what commits
  // leave in the WAL is moved by Checkpoint alone: a commit that has succeeded has nothing left that could fail.
  void BecomeEditors();
  // Moves what commits have left in the WAL, once there is enough of it. What fails is done the next time.
  void Checkpoint() noexcept;

 private:
  int Prepare(int version);
  static int CountPages(void* self, sqlite3* handle, const char* name, int pages);

  const std::shared_ptr<const TemporaryFolder> m_folder;  // of a store that keeps nothing; else null
  const std::string m_file;
  SQLite::Database m_database;
  int m_version = 0;
  int m_walPages = 0;
  std::unordered_map<std::string, std::unique_ptr<SQLite::Statement>> m_statements;
};

// The id of the next row of `table`, which gives none twice: 1 to 2147483647, 0 where none is left. What a damaged row
// has beyond that does not count. REQUIRES: a transaction is open.
int32_t NextId(Database& database, const std::string& table);

// One use of a prepared statement. The bound texts are not copied: REQUIRES that they outlive the use.
// A statement must not be in use twice at a time.
class Query {
 public:
  template <class... Args>
  Query(Database& database, const char* sql, const Args&... args) : m_statement(database.Prepared(sql)) {
    int index = 0;
    (Bind(++index, args), ...);
  }
  ~Query() {
    m_statement.tryReset();
    m_statement.clearBindings();
  }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  bool Next() { return m_statement.executeStep(); }
  int32_t Int(int column) { return m_statement.getColumn(column).getInt(); }
  int64_t Int64(int column) { return m_statement.getColumn(column).getInt64(); }
  bool IsInteger(int column) { return m_statement.getColumn(column).isInteger(); }
  bool IsText(int column) { return m_statement.getColumn(column).isText(); }
  std::string String(int column) { return m_statement.getColumn(column).getString(); }

 private:
  void Bind(int index, int32_t value) { m_statement.bind(index, value); }
  void Bind(int index, int64_t value) { m_statement.bind(index, value); }
  void Bind(int index, const std::string& value) { m_statement.bindNoCopy(index, value); }

  SQLite::Statement& m_statement;
};

// A transaction that will write; undone at its end unless it was committed.
class Transaction {
 public:
  explicit Transaction(Database& database);
  // Rolls back what was not committed, or nobody could begin another. Where memory is short it tries for ten seconds.
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit();

 private:
  Database& m_database;
  SQLite::Statement& m_rollback;
  bool m_isCommitted = false;
};

// A part of a transaction, undone at its end unless it was kept. REQUIRES: a transaction is open; one at a time.
class Savepoint {
 public:
  explicit Savepoint(Database& database);
  ~Savepoint();
  Savepoint(const Savepoint&) = delete;
  Savepoint& operator=(const Savepoint&) = delete;

  void Keep();
  // False where even that fails: the whole transaction must be given up then.
  bool Undo() noexcept;

 private:
  Database& m_database;
  SQLite::Statement& m_rollback;
  SQLite::Statement& m_release;
  bool m_isOver = false;
};

// Whether that exception is of a lock that another process holds.
bool IsBusy(const SQLite::Exception& exception);

template <class... Args>
int Execute(Database& database, const char* sql, const Args&... args) {
  Query query(database, sql, args...);
  query.Next();
  return database.Handle().getChanges();
}

}  // namespace server
