// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "server/commands/Commands.h"
#include "server/site/Site.h"
#include "server/store/FileLock.h"
#include "server/store/StoreCopy.h"
#include "server/store/StoreIdentity.h"

namespace server {

namespace fs = std::filesystem;

namespace {

// A copy under another name until it is whole, so that what stands under its own is. Gone with this object unless Take
// was called.
class Part {
 public:
  Part(const std::string& from, const std::string& to) : m_part(to + "-part") {
    Remove();  // what a process left that was killed
    try {
      CopyStore(from, m_part);
    } catch (const std::exception& e) {
      Remove();
      throw std::runtime_error("cannot copy " + from + " to " + m_part + ": " + e.what());
    }
  }
  ~Part() { Remove(); }
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;

  // An administrator restores for the server's user.
  void GiveToOwnerOf(const std::string& file) const {
    struct stat owned {};
    if (geteuid() != 0 || stat(file.c_str(), &owned) != 0) return;
    if (chown(m_part.c_str(), owned.st_uid, owned.st_gid) != 0) throw std::runtime_error(std::strerror(errno));
  }
  void Become(const std::string& file) const {
    fs::rename(m_part, file);
    SyncFolderOf(file);
  }

 private:
  void Remove() const {
    std::remove(m_part.c_str());
    std::remove((m_part + "-journal").c_str());
  }

  const std::string m_part;
};

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
  if (!fs::exists(file)) return {};
  Settle(file);
  std::string aside = FreeName(file + ".replaced");
  std::error_code cannotLink;
  fs::create_hard_link(file, aside, cannotLink);
  if (fs::exists(file + "-wal")) fs::rename(file + "-wal", aside + "-wal");
  fs::remove(file + "-shm");
  if (cannotLink) fs::rename(file, aside);
  return aside;
}

}  // namespace

void BackUp(const std::string& data, const std::string& file) {
  if (fs::symlink_status(file).type() != fs::file_type::not_found) throw std::runtime_error(file + " is there already");
  { const Database known(data, Database::Use::kReading); }
  Part(data, file).Become(file);
}

std::string Restore(const std::string& data, const std::string& file) {
  const std::string store = StoreFile(data);
  if (fs::exists(store) && fs::exists(file) && fs::equivalent(store, file)) {
    throw std::runtime_error(file + " is the store itself");
  }
  NeedSound(file);
  const FileLock lock(store);
  const Part part(file, store + ".restore");
  part.GiveToOwnerOf(store);
  std::string replaced = PutAside(store);
  part.Become(store);
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
