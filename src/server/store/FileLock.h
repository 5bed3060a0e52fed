// SPDX-License-Identifier: Apache-2.0
// One server at a time on a store: it keeps the site in memory and would not see what another one writes.
#pragma once

#include <string>

namespace server {

class FileLock {
 public:
  // Locks the store's file + ".lock" until the end of the object's life, whatever symbolic links lead to the store;
  // ":memory:" needs none. Throws std::runtime_error with one plain line when somebody else has it.
  explicit FileLock(const std::string& dataFile);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  int m_descriptor = -1;
};

}  // namespace server
