// SPDX-License-Identifier: Apache-2.0
#include "server/store/StoreIdentity.h"

#include <SQLiteCpp/Transaction.h>

#include <filesystem>
#include <stdexcept>

#include "base/system/Files.h"

namespace server {

namespace fs = std::filesystem;

namespace {

constexpr int kMostLinks = 40;  // as the system follows them

// Stores of earlier servers have no application's number, but these tables.
const char kCountOurTables[] =
    "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND "
    "name IN ('users', 'sessions', 'groups', 'documents', 'views', 'shares', 'changes')";
constexpr int kOurTables = 7;

}  // namespace

int VersionOfStore(SQLite::Database& database, const std::string& file) {
  // One moment of the file: another process may be making a store of it.
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::DEFERRED);
  const int application = database.execAndGet("PRAGMA application_id").getInt();
  const int version = database.execAndGet("PRAGMA user_version").getInt();
  const bool isEmpty = database.execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0;
  const bool isOurs = application == kApplicationId ||
                      (application == 0 && database.execAndGet(kCountOurTables).getInt() == kOurTables);
  if (isEmpty && version == 0 && application == 0) return 0;
  if (!isOurs || version < 1) throw std::runtime_error(file + " is not a store of this server");
  return version;
}

std::string StoreFile(const std::string& name) {
  if (name == ":memory:") return name;
  fs::path path = base::PathOf(name);
  std::error_code ignored;
  for (int links = 0; links < kMostLinks && fs::is_symlink(path, ignored); ++links) {
    path = path.parent_path() / fs::read_symlink(path, ignored);  // an absolute target takes the place of all
  }
  const fs::path folder = fs::canonical(path.has_parent_path() ? path.parent_path() : ".", ignored);
  return base::NameOf(ignored ? path : folder / path.filename());
}

bool IsStoreThere(const std::string& file) {
  std::error_code error;
  return fs::file_size(base::PathOf(file), error) > 0 && !error;
}

void NeedStore(const std::string& file) {
  if (!IsStoreThere(file)) throw std::runtime_error("there is no store " + file);
}

std::string FreeName(const std::string& wanted) {
  std::string name = wanted;
  for (int n = 2; fs::symlink_status(base::PathOf(name)).type() != fs::file_type::not_found; ++n) {
    name = wanted + "-" + std::to_string(n);
  }
  return name;
}

}  // namespace server
