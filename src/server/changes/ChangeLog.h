// SPDX-License-Identifier: Apache-2.0
// The numbered changes that clients may still ask for. Not thread-safe: its owner locks, and opens the transaction.
#pragma once

#include <vector>

#include "server/changes/Change.h"
#include "server/store/Database.h"

namespace server {

class ChangeLog {
 public:
  ChangeLog(Database& database, uint64_t keep);

  int64_t Last() const { return m_last; }  // 0 before the first change
  // Whether everything after change `number` is still here (and `number` was ever given).
  bool Reaches(int64_t number) const { return number >= m_oldest - 1 && number <= m_last; }

  // Writes the changes, which have the numbers after the last one. They count once the owner's transaction is committed
  // and it says so.
  void Append(const std::vector<Change>& changes);
  void Committed(const std::vector<Change>& changes);

  // The changes after `number`, in order: at most `limit` of them, and no more once they hold `maxBytes`.
  std::vector<Change> Read(int64_t number, size_t limit, size_t maxBytes);

 private:
  void Trim(int64_t upTo);

  Database& m_database;
  const int64_t m_keep;
  int64_t m_last = 0;
  int64_t m_oldest = 1;
};

}  // namespace server
