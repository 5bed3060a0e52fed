// SPDX-License-Identifier: Apache-2.0
// One server at a time on a store: it keeps the site in memory and would not see what another one writes.
#pragma once

#include <stdexcept>
#include <string>

#include "base/system/Files.h"

namespace server {

class FileInUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class FileLock {
 public:
  // Locks the store's file + ".lock" until the end of the object's life, whatever symbolic links lead to the store;
  // ":memory:" needs none. Throws FileInUse with one plain line when somebody else has it, std::runtime_error when it
  // cannot be made.
  explicit FileLock(const std::string& dataFile);

 private:
  base::HeldFile m_file;
};

}  // namespace server
