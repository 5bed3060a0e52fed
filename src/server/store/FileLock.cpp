// SPDX-License-Identifier: Apache-2.0
#include "server/store/FileLock.h"

#include <stdexcept>

#include "server/store/StoreIdentity.h"

namespace server {

FileLock::FileLock(const std::string& dataFile) {
  if (dataFile == ":memory:") return;
  const std::string file = StoreFile(dataFile);
  // The store's owner must be able to take it too, where an administrator came first.
  switch (m_file.Hold(file + ".lock", file)) {
    case base::HeldFile::Outcome::kHeld:
      return;
    case base::HeldFile::Outcome::kHeldByAnother:
      throw FileInUse("another server uses " + dataFile);
    case base::HeldFile::Outcome::kCannotBeMade:
      throw std::runtime_error("cannot write beside " + dataFile);
  }
}

}  // namespace server
