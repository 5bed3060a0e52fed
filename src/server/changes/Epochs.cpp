// SPDX-License-Identifier: Apache-2.0
#include <iterator>

#include "server/changes/ChangeLog.h"

namespace server {

namespace {

constexpr int kKeptEpochs = 1000;

}  // namespace

Epochs::Epochs(Database& database, int64_t lastChange) {
  Transaction transaction(database);
  // Not by what the store remembers of given numbers: no damage there may keep a server from starting.
  Execute(database, "DELETE FROM epochs WHERE number NOT BETWEEN 1 AND ?", kMaxChangeNumber);
  Execute(database,
          "INSERT INTO epochs (number, id, first_change) "
          "VALUES ((SELECT coalesce(max(number), 0) + 1 FROM epochs), lower(hex(randomblob(16))), ?)",
          lastChange + 1);
  Execute(database, "DELETE FROM epochs WHERE number <= (SELECT max(number) FROM epochs) - ?", kKeptEpochs);
  {
    Query rows(database, "SELECT id, first_change FROM epochs ORDER BY number");
    while (rows.Next()) Add(rows, lastChange);
  }
  transaction.Commit();
}

void Epochs::Add(Query& row, int64_t lastChange) {
  const int64_t firstChange = row.Int64(1);
  const int64_t least = m_epochs.empty() ? 1 : m_epochs.back().firstChange;
  if (row.IsText(0) && row.IsInteger(1) && firstChange >= least && firstChange <= lastChange + 1) {
    m_epochs.push_back({row.String(0), firstChange});
  } else {
    m_epochs.clear();  // where the ones before a damaged one have ended nobody knows
  }
}

bool Epochs::Holds(const std::string& epoch, int64_t number, int64_t lastChange) const {
  for (auto it = m_epochs.rbegin(); it != m_epochs.rend(); ++it) {
    if (it->id == epoch) return number <= lastChange;
    lastChange = it->firstChange - 1;
  }
  return false;
}

}  // namespace server
