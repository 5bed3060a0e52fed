// SPDX-License-Identifier: Apache-2.0
// What becomes of a site when another process changes its users.
#include <algorithm>

#include "server/permissions/Rules.h"
#include "server/site/Site.h"

namespace server {

void Site::FollowAccounts() {
  Locked locked(m_mutex);
  CloseEndedSessions(locked);
  for (int32_t user : m_accounts.DeletedUsers()) {
    std::vector<Step> steps = StepsOfDeleting(user);
    Transaction transaction(m_database);
    m_accounts.ForgetDeletedUser(user);
    Commit(locked, transaction, {}, steps);
  }
}

// As a group is deleted: views first, then the groups, deepest first.
std::vector<Step> Site::StepsOfDeleting(int32_t userId) const {
  std::vector<Step> steps;
  for (const ViewPtr& view : m_catalog.views.SeenBy(userId)) {
    if (view->userId == userId) steps.emplace_back(view, nullptr);
    const auto share = std::lower_bound(view->sharedWith.begin(), view->sharedWith.end(), userId);
    if (share == view->sharedWith.end() || *share != userId) continue;
    auto rest = std::make_shared<View>(*view);
    rest->sharedWith.erase(rest->sharedWith.begin() + (share - view->sharedWith.begin()));
    steps.emplace_back(view, std::move(rest)).contentChanged = false;
  }
  std::vector<std::pair<size_t, GroupPtr>> groups;
  for (const GroupPtr& group : m_catalog.groups.SeenBy(userId)) {
    if (group->userId == userId) groups.emplace_back(WayToTop(m_catalog, group->id).size(), group);
  }
  std::stable_sort(groups.begin(), groups.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  for (const auto& group : groups) steps.emplace_back(group.second, nullptr);
  return steps;
}

}  // namespace server
