// SPDX-License-Identifier: Apache-2.0
#include "server/login/Accounts.h"

#include <algorithm>
#include <chrono>

#include "server/documents/Requests.h"
#include "server/login/Secrets.h"
#include "server/model/Refusal.h"

namespace server {

namespace {

// A use within this many seconds of the last recorded one is not written down.
constexpr int64_t kUseGranularity = 30;

}  // namespace

int64_t SecondsNow() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string WhyUnusable(const std::string& name, const std::string& password) {
  if (password.empty()) return "a password is not empty";
  return IsName(name) ? "" : Refusal::BadName().detail;
}

bool Accounts::HasUsers() {
  Query query(m_database, "SELECT 1 FROM users LIMIT 1");
  return query.Next();
}

std::vector<User> Accounts::Users() {
  Query query(m_database,
              "SELECT id, name, password, ptz, EXISTS (SELECT 1 FROM sessions WHERE user_id = users.id AND "
              "last_used >= ?) FROM users WHERE id BETWEEN 1 AND 2147483647 ORDER BY id",
              m_clock() - kOnlineSeconds);
  const std::set<int32_t> lately = UsersOfUnwritten(m_clock() - kOnlineSeconds);
  std::vector<User> users;
  while (query.Next()) {
    const int32_t id = query.Int(0);
    if (!IsName(query.String(1))) continue;  // a damaged store
    users.push_back({id, query.String(1), query.String(2), query.Int(3), query.Int(4) != 0 || lately.count(id) != 0});
  }
  return users;
}

std::set<int32_t> Accounts::UsersOfUnwritten(int64_t since) {
  std::set<int32_t> users;
  for (const auto& [session, time] : m_uses) {
    if (time < since) continue;
    Query query(m_database, "SELECT user_id FROM sessions WHERE id = ?", session);
    if (query.Next()) users.insert(query.Int(0));
  }
  return users;
}

std::optional<User> Accounts::FindUser(const std::string& name) {
  Query query(m_database, "SELECT id, name, password, ptz FROM users WHERE name = ? AND id BETWEEN 1 AND 2147483647",
              name);
  if (!query.Next()) return std::nullopt;
  return User{query.Int(0), query.String(1), query.String(2), query.Int(3), false};
}

std::string Accounts::UserName(int32_t id) {
  Query query(m_database, "SELECT name FROM users WHERE id = ?", id);
  return query.Next() && IsName(query.String(0)) ? query.String(0) : std::string();
}

bool Accounts::UserExists(int32_t id) {
  Query query(m_database, "SELECT 1 FROM users WHERE id = ?", id);
  return query.Next();
}

bool Accounts::AddUser(int32_t id, const std::string& name, const std::string& passwordHash, int32_t ptz) {
  if (FindUser(name)) return false;
  if (id == 0) id = NextId(m_database, "users");
  if (id == 0) throw Refusal::NoIdsLeft();
  return Execute(m_database, "INSERT INTO users (id, name, password, ptz) VALUES (?,?,?,?)", id, name, passwordHash,
                 ptz) != 0;
}

void Accounts::UpdateUser(int32_t id, const std::string& name, int32_t ptz) {
  Execute(m_database, "UPDATE users SET name = ?, ptz = ? WHERE id = ?", name, ptz, id);
}

bool Accounts::SetPassword(const std::string& name, const std::string& passwordHash) {
  if (Execute(m_database, "UPDATE users SET password = ? WHERE name = ?", passwordHash, name) == 0) return false;
  Execute(m_database, "DELETE FROM sessions WHERE user_id = (SELECT id FROM users WHERE name = ?)", name);
  return true;
}

bool Accounts::RenameUser(const std::string& name, const std::string& newName) {
  const std::optional<User> user = FindUser(name);
  if (!user) throw Refusal::NoSuchUser();
  if (name != newName && FindUser(newName)) return false;
  UpdateUser(user->id, newName, user->ptz);
  return true;
}

bool Accounts::DeleteUser(const std::string& name) {
  const std::optional<User> user = FindUser(name);
  if (!user) return false;
  Execute(m_database, "DELETE FROM sessions WHERE user_id = ?", user->id);
  Execute(m_database, "DELETE FROM default_views WHERE user_id = ?", user->id);
  Execute(m_database, "DELETE FROM users WHERE id = ?", user->id);
  Execute(m_database, "INSERT OR REPLACE INTO seeded (kind, id, digest) VALUES ('deleted user', ?, '')", user->id);
  return true;
}

std::vector<int32_t> Accounts::DeletedUsers() {
  Query query(m_database, "SELECT id FROM seeded WHERE kind = 'deleted user'");
  std::vector<int32_t> ids;
  while (query.Next()) ids.push_back(query.Int(0));
  return ids;
}

void Accounts::ForgetDeletedUser(int32_t id) {
  Execute(m_database, "DELETE FROM seeded WHERE kind = 'deleted user' AND id = ?", id);
}

std::string Accounts::OpenSession(int32_t userId, const std::string& client) {
  std::string token = MakeToken();
  const int64_t now = m_clock();
  Execute(m_database, "DELETE FROM sessions WHERE last_used < ?", now - kSessionSeconds);
  Execute(m_database, "INSERT INTO sessions (token_hash, user_id, client, last_used) VALUES (?,?,?,?)", Digest(token),
          userId, client, now);
  return token;
}

std::optional<Caller> Accounts::Authenticate(const std::string& token) {
  const std::string digest = Digest(token);
  Caller caller;
  {
    Query query(m_database, "SELECT token_hash, user_id, id FROM sessions WHERE token_hash = ?", digest);
    if (!query.Next() || !SameDigest(query.String(0), digest)) return std::nullopt;
    caller = {query.Int(1), query.Int64(2)};
  }
  if (!Touch(caller.sessionId)) return std::nullopt;
  return caller;
}

bool Accounts::Touch(int64_t sessionId) {
  const int64_t now = m_clock();
  int64_t lastUsed = 0;
  {
    Query query(m_database, "SELECT last_used FROM sessions WHERE id = ?", sessionId);
    if (!query.Next()) return false;
    lastUsed = query.Int64(0);
  }
  const auto unwritten = m_uses.find(sessionId);
  if (unwritten != m_uses.end()) {
    if (unwritten->second == kEnded) return false;
    lastUsed = std::max(lastUsed, unwritten->second);
  }
  const bool alive = lastUsed >= now - kSessionSeconds;
  if (!alive || lastUsed < now - kUseGranularity) m_uses[sessionId] = alive ? now : kEnded;
  return alive;
}

void Accounts::Write(const Uses& uses) {
  for (const auto& [session, time] : uses) {
    if (time == kEnded) {
      CloseSession(session);
    } else {
      Execute(m_database, "UPDATE sessions SET last_used = max(last_used, ?) WHERE id = ?", time, session);
    }
  }
}

void Accounts::Forget(const Uses& written) {
  for (const auto& [session, time] : written) {
    const auto use = m_uses.find(session);
    if (use != m_uses.end() && use->second == time) m_uses.erase(use);
  }
}

std::vector<int64_t> Accounts::SessionsOf(const std::string& name) {
  Query query(m_database, "SELECT id FROM sessions WHERE user_id = (SELECT id FROM users WHERE name = ?)", name);
  std::vector<int64_t> sessions;
  while (query.Next()) sessions.push_back(query.Int64(0));
  return sessions;
}

void Accounts::CloseSession(int64_t sessionId) {
  Execute(m_database, "DELETE FROM sessions WHERE id = ?", sessionId);
}

bool Accounts::HasSession(int64_t sessionId) {
  Query query(m_database, "SELECT 1 FROM sessions WHERE id = ?", sessionId);
  return query.Next();
}

}  // namespace server
