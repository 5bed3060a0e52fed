// SPDX-License-Identifier: Apache-2.0
#include "server/store/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "server/store/StoreIdentity.h"

namespace server {

namespace {

// The store's owner must be able to take it too, where an administrator came first.
void GiveToOwnerOf(const std::string& file, int descriptor) {
  struct stat owned {};
  if (geteuid() != 0 || stat(file.c_str(), &owned) != 0) return;
  if (fchown(descriptor, owned.st_uid, owned.st_gid) != 0) return;  // it stays the administrator's
}

}  // namespace

FileLock::FileLock(const std::string& dataFile) {
  if (dataFile == ":memory:") return;
  const std::string file = StoreFile(dataFile);
  m_descriptor = open((file + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (m_descriptor < 0) throw std::runtime_error("cannot write beside " + dataFile);
  GiveToOwnerOf(file, m_descriptor);
  if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
    close(m_descriptor);
    throw std::runtime_error("another server uses " + dataFile);
  }
}

FileLock::~FileLock() {
  if (m_descriptor >= 0) close(m_descriptor);
}

}  // namespace server
