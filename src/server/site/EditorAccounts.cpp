// SPDX-License-Identifier: Apache-2.0
// Edits of users and sessions, and what becomes of the content of a user who is gone.
#include <algorithm>

#include "server/permissions/Rules.h"
#include "server/site/Editor.h"

namespace server {

bool Editor::AddUser(const std::string& name, const std::string& passwordHash) {
  return m_accounts.AddUser(0, name, passwordHash, 0);
}

bool Editor::SetPassword(const std::string& name, const std::string& passwordHash) {
  for (int64_t session : m_accounts.SessionsOf(name)) m_closedSessions.push_back(session);
  return m_accounts.SetPassword(name, passwordHash);
}

std::string Editor::OpenSession(int32_t userId, const std::string& client) {
  return m_accounts.OpenSession(userId, client);
}

void Editor::CloseSession(const Caller& caller) {
  m_closedSessions.push_back(caller.sessionId);
  m_accounts.CloseSession(caller.sessionId);
}

void Editor::FollowDeletion(int32_t userId) {
  Write({}, StepsOfDeleting(userId));
  m_accounts.ForgetDeletedUser(userId);
}

// As a group is deleted: views first, then the groups, deepest first.
std::vector<Step> Editor::StepsOfDeleting(int32_t userId) const {
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
