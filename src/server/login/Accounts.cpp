// SPDX-License-Identifier: Apache-2.0
#include "server/login/Accounts.h"

#include <SQLiteCpp/Exception.h>

#include <chrono>

#include "server/documents/Json.h"
#include "server/login/Secrets.h"
#include "server/model/Refusal.h"
#include "server/permissions/Rules.h"

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
  try {
    wire::Parse('{' + wire::Members({{"Name", name}}) + '}');  // refuses what is not UTF-8
    CheckName(name);
  } catch (const Refusal&) {
    return Refusal::BadName().detail;
  }
  return {};
}

bool Accounts::HasUsers() {
  Query query(m_database, "SELECT 1 FROM users LIMIT 1");
  return query.Next();
}

std::vector<User> Accounts::Users() {
  Query query(m_database,
              "SELECT id, name, password, ptz, EXISTS (SELECT 1 FROM sessions WHERE user_id = users.id AND "
              "last_used >= ?) FROM users ORDER BY id",
              m_clock() - kOnlineSeconds);
  std::vector<User> users;
  while (query.Next()) {
    users.push_back({query.Int(0), query.String(1), query.String(2), query.Int(3), query.Int(4) != 0});
  }
  return users;
}

std::optional<User> Accounts::FindUser(const std::string& name) {
  Query query(m_database, "SELECT id, name, password, ptz FROM users WHERE name = ?", name);
  if (!query.Next()) return std::nullopt;
  return User{query.Int(0), query.String(1), query.String(2), query.Int(3), false};
}

std::string Accounts::UserName(int32_t id) {
  Query query(m_database, "SELECT name FROM users WHERE id = ?", id);
  return query.Next() ? query.String(0) : std::string();
}

bool Accounts::UserExists(int32_t id) {
  Query query(m_database, "SELECT 1 FROM users WHERE id = ?", id);
  return query.Next();
}

bool Accounts::AddUser(int32_t id, const std::string& name, const std::string& passwordHash, int32_t ptz) {
  if (FindUser(name)) return false;
  Execute(m_database, "INSERT INTO users (id, name, password, ptz) VALUES (nullif(?, 0),?,?,?)", id, name, passwordHash,
          ptz);
  return true;
}

void Accounts::UpdateUser(int32_t id, const std::string& name, int32_t ptz) {
  Execute(m_database, "UPDATE users SET name = ?, ptz = ? WHERE id = ?", name, ptz, id);
}

bool Accounts::SetPassword(const std::string& name, const std::string& passwordHash) {
  Transaction transaction(m_database);
  if (Execute(m_database, "UPDATE users SET password = ? WHERE name = ?", passwordHash, name) == 0) return false;
  Execute(m_database, "DELETE FROM sessions WHERE user_id = (SELECT id FROM users WHERE name = ?)", name);
  transaction.Commit();
  return true;
}

std::string Accounts::OpenSession(int32_t userId, const std::string& client) {
  std::string token = MakeToken();
  const int64_t now = m_clock();
  Transaction transaction(m_database);
  Execute(m_database, "DELETE FROM sessions WHERE last_used < ?", now - kSessionSeconds);
  Execute(m_database, "INSERT INTO sessions (token_hash, user_id, client, last_used) VALUES (?,?,?,?)", Digest(token),
          userId, client, now);
  transaction.Commit();
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
  const bool alive = lastUsed >= now - kSessionSeconds;
  if (alive && lastUsed >= now - kUseGranularity) return true;
  try {
    if (alive) {
      Execute(m_database, "UPDATE sessions SET last_used = ? WHERE id = ?", now, sessionId);
    } else {
      CloseSession(sessionId);
    }
  } catch (const SQLite::Exception&) {
    // A store that cannot be written, a full disk say, may still be read: the request itself shows.
  }
  return alive;
}

void Accounts::CloseSession(int64_t sessionId) {
  Execute(m_database, "DELETE FROM sessions WHERE id = ?", sessionId);
}

}  // namespace server
