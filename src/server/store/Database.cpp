// SPDX-License-Identifier: Apache-2.0
#include "server/store/Database.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Transaction.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <thread>
#include <utility>

#include "base/system/Files.h"
#include "server/store/StoreIdentity.h"
#include "server/store/StoreUpgrade.h"

namespace server {

namespace {

constexpr int kSchemaVersion = 3;

constexpr int kLockWaitMs = 5000;    // for a lock
constexpr int kReaderWaitMs = 1000;  // for the moments in which SQLite lets nobody read
constexpr int kCheckpointPages = 4000;

// Numbers of users, groups, views, sessions and changes are never given twice: a client may still hold an old one.
const char kSchema[] = R"sql(
CREATE TABLE users (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE, password TEXT NOT NULL,
                    ptz INTEGER NOT NULL DEFAULT 0);
CREATE TABLE sessions (id INTEGER PRIMARY KEY AUTOINCREMENT, token_hash TEXT NOT NULL UNIQUE, user_id INTEGER NOT NULL,
                       client TEXT NOT NULL, last_used INTEGER NOT NULL);
CREATE INDEX sessions_of_user ON sessions (user_id);
CREATE TABLE groups (id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL, parent_id INTEGER NOT NULL,
                     user_id INTEGER NOT NULL, shared_folder INTEGER NOT NULL, sequence INTEGER NOT NULL,
                     change_number INTEGER NOT NULL DEFAULT 0);
CREATE TABLE documents (id INTEGER PRIMARY KEY AUTOINCREMENT, text TEXT NOT NULL);
CREATE TABLE views (id INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT NOT NULL, name TEXT NOT NULL,
                    group_id INTEGER NOT NULL, user_id INTEGER NOT NULL, sequence INTEGER NOT NULL,
                    auto_cycle INTEGER NOT NULL, cycle_time INTEGER NOT NULL, document_id INTEGER NOT NULL,
                    change_number INTEGER NOT NULL DEFAULT 0);
CREATE INDEX views_of_document ON views (document_id);
CREATE TABLE shares (view_id INTEGER NOT NULL, user_id INTEGER NOT NULL, PRIMARY KEY (view_id, user_id)) WITHOUT ROWID;
CREATE TABLE changes (number INTEGER PRIMARY KEY AUTOINCREMENT, kind INTEGER NOT NULL, object_id INTEGER NOT NULL,
                      session_id INTEGER NOT NULL, content_changed INTEGER NOT NULL, before TEXT NOT NULL,
                      after TEXT NOT NULL, head TEXT NOT NULL, shared_head TEXT NOT NULL, document_id INTEGER NOT NULL,
                      bytes INTEGER NOT NULL DEFAULT 0);
CREATE INDEX changes_of_document ON changes (document_id);
CREATE TABLE epochs (number INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL, first_change INTEGER NOT NULL);
CREATE TABLE default_views (user_id INTEGER PRIMARY KEY, type INTEGER NOT NULL, view_id INTEGER NOT NULL);
CREATE TABLE areas (id INTEGER PRIMARY KEY, name TEXT NOT NULL);
CREATE TABLE elements (id INTEGER PRIMARY KEY, type INTEGER NOT NULL, name TEXT NOT NULL, site_id INTEGER NOT NULL);
CREATE TABLE seeded (kind TEXT NOT NULL, id INTEGER NOT NULL, digest TEXT NOT NULL,
                     PRIMARY KEY (kind, id)) WITHOUT ROWID;
)sql";

bool MayMake(Database::Use use) {
  return use == Database::Use::kSite || use == Database::Use::kAccounts;
}

// SQLite's own stores in memory let nobody read while somebody writes.
std::shared_ptr<const TemporaryFolder> FolderFor(const std::string& file) {
  return file == ":memory:" ? std::make_shared<const TemporaryFolder>() : nullptr;
}

SQLite::Database Open(const std::string& file, Database::Use use) {
  const bool isMade = MayMake(use);
  if (!isMade) NeedStore(file);
  // It holds the hashes of passwords and tokens. SQLite gives the files that it makes beside it the same permissions.
  if (isMade) base::MakePrivateFile(file);  // nothing where it is there
  try {
    // To read as well: else a log that is empty would stay beside the file. What may not be written is read all the
    // same.
    return SQLite::Database(file, SQLite::OPEN_READWRITE | (isMade ? SQLite::OPEN_CREATE : 0), kLockWaitMs);
  } catch (const SQLite::Exception& e) {
    throw std::runtime_error("cannot open " + file + ": " + e.what());
  }
}

// SQLite does not wait for others where it changes the mode of the journal: two that make a store at once meet there.
template <class Action>
void WaitWhileBusy(const Action& action) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLockWaitMs);
  while (true) {
    try {
      return action();
    } catch (const SQLite::Exception& e) {
      if (!IsBusy(e) || std::chrono::steady_clock::now() > deadline) throw;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

// The end of the last connection would write another application's log into its file.
void KeepAsItIs(SQLite::Database& database, bool keep) {
  sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, keep ? 1 : 0, nullptr);
}

// Another process may do the same at this moment; the second one then finds the first one's work.
int MakeSchema(SQLite::Database& database) {
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
  const int version = database.execAndGet("PRAGMA user_version").getInt();
  if (version != 0) return version;
  database.exec(kSchema);
  database.exec("PRAGMA application_id=" + std::to_string(kApplicationId));
  database.exec("PRAGMA user_version=" + std::to_string(kSchemaVersion));
  transaction.commit();
  return kSchemaVersion;
}

}  // namespace

Database::Database(const std::string& file, Use use)
    : m_folder(FolderFor(file)), m_file(m_folder ? m_folder->File("store.db") : file), m_database(Open(m_file, use)) {
  int version = 0;
  try {
    KeepAsItIs(m_database, true);
    WaitWhileBusy([&] { version = VersionOfStore(m_database, file); });
    if (version == 0 && !MayMake(use)) throw std::runtime_error("there is no store in " + file);
    if (version > kSchemaVersion) throw std::runtime_error(file + " was written by a newer server");
    KeepAsItIs(m_database, false);
    if (use == Use::kReading) m_database.exec("PRAGMA query_only=1");
    if (use != Use::kReading) version = Prepare(version);
    if (version < kSchemaVersion && use == Use::kSite) version = UpgradeStore(m_database, file);
    m_database.setBusyTimeout(kLockWaitMs);
  } catch (const SQLite::Exception& e) {
    std::string why = e.what();
    std::replace(why.begin(), why.end(), '\n', ' ');  // it may quote a damaged schema
    throw std::runtime_error("cannot use " + file + " as a store: " + why);
  }
  m_version = version;
}

int Database::Prepare(int version) {
  WaitWhileBusy([this] { m_database.exec("PRAGMA journal_mode=WAL"); });
  m_database.exec(m_folder ? "PRAGMA synchronous=OFF" : "PRAGMA synchronous=FULL");
  if (version == 0) WaitWhileBusy([&] { version = MakeSchema(m_database); });
  return version;
}

bool Database::HasChanged() {
  Query version(*this, "PRAGMA data_version");
  version.Next();
  return std::exchange(m_dataVersion, version.Int(0)) != m_dataVersion;
}

bool Database::IsCurrent() const {
  return m_version == kSchemaVersion;
}

Database::Database(const Database& store, Reading)
    : m_folder(store.m_folder), m_file(store.m_file), m_database(Open(m_file, Use::kReading)) {
  m_database.exec("PRAGMA query_only=1");
  m_database.setBusyTimeout(kReaderWaitMs);
}

void Database::BecomeEditors() {
  m_database.setBusyTimeout(0);
  sqlite3_wal_hook(m_database.getHandle(), &Database::CountPages, this);
}

int Database::CountPages(void* self, sqlite3*, const char*, int pages) {
  static_cast<Database*>(self)->m_walPages = pages;
  return SQLITE_OK;
}

void Database::Checkpoint() noexcept {
  if (m_walPages < kCheckpointPages) return;
  m_walPages = 0;
  sqlite3_wal_checkpoint_v2(m_database.getHandle(), nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
}

SQLite::Statement& Database::Prepared(const char* sql) {
  std::unique_ptr<SQLite::Statement>& statement = m_statements[sql];
  if (!statement) statement = std::make_unique<SQLite::Statement>(m_database, sql);
  return *statement;
}

int32_t NextId(Database& database, const std::string& table) {
  const std::string sql = "SELECT coalesce((SELECT max(id) FROM " + table +
                          " WHERE id BETWEEN 1 AND 2147483647), 0), "
                          "coalesce((SELECT max(seq) FROM sqlite_sequence WHERE name = '" +
                          table + "'), 0)";
  Query query(database, sql.c_str());
  query.Next();
  const int64_t last = std::max(query.Int64(0), query.Int64(1));
  return last < std::numeric_limits<int32_t>::max() ? static_cast<int32_t>(last + 1) : 0;
}

Transaction::Transaction(Database& database) : m_database(database), m_rollback(database.Prepared("ROLLBACK")) {
  Execute(database, "BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  sqlite3* const handle = m_database.Handle().getHandle();
  for (int attempts = 1000; !m_isCommitted && sqlite3_get_autocommit(handle) == 0 && attempts > 0; --attempts) {
    if (m_rollback.tryExecuteStep() != SQLITE_DONE) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    m_rollback.tryReset();
  }
}

void Transaction::Commit() {
  Execute(m_database, "COMMIT");
  m_isCommitted = true;
}

Savepoint::Savepoint(Database& database)
    : m_database(database),
      m_rollback(database.Prepared("ROLLBACK TO edit")),
      m_release(database.Prepared("RELEASE edit")) {
  Execute(database, "SAVEPOINT edit");
}

Savepoint::~Savepoint() {
  if (!m_isOver) Undo();
}

void Savepoint::Keep() {
  Execute(m_database, "RELEASE edit");
  m_isOver = true;
}

bool Savepoint::Undo() noexcept {
  m_isOver = true;
  const auto run = [](SQLite::Statement& statement) {
    const int result = statement.tryExecuteStep();
    statement.tryReset();
    return result == SQLITE_DONE;
  };
  return sqlite3_get_autocommit(m_database.Handle().getHandle()) == 0 && run(m_rollback) && run(m_release);
}

bool IsBusy(const SQLite::Exception& exception) {
  return (exception.getErrorCode() & 0xFF) == SQLITE_BUSY;
}

}  // namespace server
