// SPDX-License-Identifier: Apache-2.0
// What becomes of a site when another process changes its users.
#include <stdexcept>

#include "server/site/Site.h"

namespace server {

void Site::FollowAccounts() {
  CloseEndedSessions();
  for (int32_t user : DeletedUsers()) {
    try {
      Make([user](Editor& editor) { editor.FollowDeletion(user); });
    } catch (const Refusal& refusal) {
      throw std::runtime_error(refusal.detail);
    }
  }
}

void Site::CloseEndedSessions() {
  WakeList wake;
  {
    const base::MutexLock lock(m_mutex);
    m_hub.Close([this](const Caller& listener) REQUIRES(m_mutex) { return !m_accounts.HasSession(listener.sessionId); },
                wake);
  }
  Wake(wake);
}

std::vector<int32_t> Site::DeletedUsers() {
  const base::MutexLock lock(m_mutex);
  return m_accounts.DeletedUsers();
}

}  // namespace server
