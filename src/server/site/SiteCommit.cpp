// SPDX-License-Identifier: Apache-2.0
// The one way by which edits and seeds change a site: store, catalog, listeners.
#include <chrono>
#include <new>
#include <thread>

#include "server/site/Site.h"

namespace server {

int64_t Site::Commit(Locked& locked, const Caller& caller, std::vector<Step>& steps) {
  Transaction transaction(m_database);
  return Commit(locked, transaction, caller, steps);
}

int64_t Site::Commit(Locked& locked, Transaction& transaction, const Caller& caller, std::vector<Step>& steps) {
  const std::vector<Change> changes = Write(caller, steps);
  transaction.Commit();

  ApplyCommitted(steps);
  m_log.Committed(changes);
  m_hub.Publish(changes, locked.wake);
  return m_log.Last();
}

std::vector<Change> Site::Write(const Caller& caller, std::vector<Step>& steps) {
  std::vector<Change> changes;
  int64_t number = m_log.Last();
  for (Step& step : steps) {
    ++number;
    if (step.newView) {
      step.newView->changeNumber = number;
      m_tables.Save(*step.newView);
    } else if (step.oldView) {
      m_tables.DeleteView(*step.oldView);
    } else if (step.newGroup) {
      step.newGroup->changeNumber = number;
      m_tables.Save(*step.newGroup);
    } else {
      m_tables.DeleteGroup(step.oldGroup->id);
    }
    changes.push_back(ChangeOf(step, number, caller, m_accounts));
  }
  m_log.Append(changes);
  return changes;
}

void Site::ApplyCommitted(const std::vector<Step>& steps) noexcept {
  while (true) {
    try {
      return ApplyTo(m_catalog, steps);
    } catch (const std::bad_alloc&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
}

}  // namespace server
