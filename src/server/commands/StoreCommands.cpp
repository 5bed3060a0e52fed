// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <stdexcept>

#include "base/system/Files.h"
#include "server/commands/Commands.h"
#include "server/site/Site.h"
#include "server/store/FileLock.h"
#include "server/store/StoreCopy.h"
#include "server/store/StoreIdentity.h"

namespace server {

namespace fs = std::filesystem;

namespace {

void NeedSound(const std::string& file) {
  Database database(file, Database::Use::kReading);
  const std::string found = database.Handle().execAndGet("PRAGMA integrity_check(1)").getString();
  if (found != "ok") throw std::runtime_error(file + " is damaged and was not restored");
}

// Puts into the file what its log holds, where both can be read.
void Settle(const std::string& file) {
  try {
    Database database(file, Database::Use::kKnownAccounts);
    database.Handle().exec("PRAGMA wal_checkpoint(TRUNCATE)");
  } catch (const std::exception&) {
    // It is kept with its log as it is.
  }
}

// Gives what is to be replaced another name. Its own it keeps where the disk can do that, lest there is a moment
// without a store. Its log goes: beside another file it would be taken for that one's.
std::string PutAside(const std::string& file) {
  const fs::path path = base::PathOf(file);
  if (!fs::exists(path)) return {};
  Settle(file);
  std::string aside = FreeName(file + ".replaced");
  std::error_code cannotLink;
  fs::create_hard_link(path, base::PathOf(aside), cannotLink);
  const fs::path log = base::PathOf(file + "-wal");
  if (fs::exists(log)) fs::rename(log, base::PathOf(aside + "-wal"));
  fs::remove(base::PathOf(file + "-shm"));
  if (cannotLink) fs::rename(path, base::PathOf(aside));
  return aside;
}

}  // namespace

void BackUp(const std::string& data, const std::string& file) {
  if (fs::symlink_status(base::PathOf(file)).type() != fs::file_type::not_found) {
    throw std::runtime_error(file + " is there already");
  }
  { const Database known(data, Database::Use::kReading); }
  StoreCopy(data, file).Become(file);
}

std::string Restore(const std::string& data, const std::string& file) {
  const std::string store = StoreFile(data);
  const fs::path replacedPath = base::PathOf(store), path = base::PathOf(file);
  if (fs::exists(replacedPath) && fs::exists(path) && fs::equivalent(replacedPath, path)) {
    throw std::runtime_error(file + " is the store itself");
  }
  NeedSound(file);
  const FileLock lock(store);
  const StoreCopy copy(file, store + ".restore");
  copy.GiveToOwnerOf(store);
  std::string replaced = PutAside(store);
  copy.Become(store);
  return replaced;
}

void ApplySeed(const std::string& data, const std::string& file, const LogLimits& limits) {
  const SeedData seed = ReadSeed(file);
  const FileLock lock(data);
  Site site(data, limits, SecondsNow);
  site.FollowAccounts();
  site.Apply(seed);
}

}  // namespace server
