// SPDX-License-Identifier: Apache-2.0
#include "server/store/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <stdexcept>

namespace server {

FileLock::FileLock(const std::string& dataFile) {
  if (dataFile == ":memory:") return;
  m_descriptor = open((dataFile + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (m_descriptor < 0) throw std::runtime_error("cannot write beside " + dataFile);
  if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
    close(m_descriptor);
    throw FileInUse("another server uses " + dataFile);
  }
}

FileLock::~FileLock() {
  if (m_descriptor >= 0) close(m_descriptor);
}

}  // namespace server
