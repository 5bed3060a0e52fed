// SPDX-License-Identifier: Apache-2.0
// The numbered changes that clients may still ask for. Not thread-safe: its owner locks, and opens the transaction.
#pragma once

#include <vector>

#include "server/Model.h"
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

// An element in the list-reply form with "Method", in the envelope, on one line.
std::string ChangeText(const Change& change, Sight sight, int method);

// What one user hears of a change: 0 it came into their sight, 1 it changed, 2 it went out of their sight; -1 nothing.
int MethodFor(const Change& change, int32_t userId);

// One event of a change stream for a listener; null where there is nothing to hear. Texts that many listeners hear
// are made once.
class EventTexts {
 public:
  explicit EventTexts(const Change& change) : m_change(change) {}
  Text For(const Caller& listener);

 private:
  const Change& m_change;
  Text m_texts[3][2][2];  // by method, by sight, foreign or own
};

}  // namespace server
