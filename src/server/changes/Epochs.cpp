// SPDX-License-Identifier: Apache-2.0
#include <iterator>

#include "server/changes/ChangeLog.h"

namespace server {

namespace {

constexpr int kKeptEpochs = 1000;

}  // namespace

Epochs::Epochs(Database& database, int64_t lastChange) {
  Transaction transaction(database);
  Execute(database, "INSERT INTO epochs (id, first_change) VALUES (lower(hex(randomblob(16))), ?)", lastChange + 1);
  Execute(database, "DELETE FROM epochs WHERE number <= (SELECT max(number) FROM epochs) - ?", kKeptEpochs);
  {
    Query rows(database, "SELECT id, first_change FROM epochs ORDER BY number");
    while (rows.Next()) m_epochs.push_back({rows.String(0), rows.Int64(1)});
  }
  transaction.Commit();
}

bool Epochs::Holds(const std::string& epoch, int64_t number, int64_t lastChange) const {
  for (auto it = m_epochs.rbegin(); it != m_epochs.rend(); ++it) {
    if (it->id == epoch) return number <= lastChange;
    lastChange = it->firstChange - 1;
  }
  return false;
}

}  // namespace server
