// SPDX-License-Identifier: Apache-2.0
// Users and their sessions. Both live in the store and nowhere else, so that another process may add a user or change
// a password while the server runs. The uses of sessions alone are written later than they happen: who reads must not
// wait for who writes. Passwords are not compared here: see Login in api/Api.cpp. Not thread-safe: its owner locks, and
// opens the transaction around what changes the store.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "server/model/Model.h"
#include "server/store/Database.h"

namespace server {

constexpr int64_t kSessionSeconds = 12 * 60 * 60;  // a session ends this long after its last use
constexpr int64_t kOnlineSeconds = 120;            // who used a session this lately counts as online

struct User {
  int32_t id = 0;
  std::string name;
  std::string passwordHash;
  int32_t ptz = 0;
  bool online = false;
};

int64_t SecondsNow();  // since 1970

// Why these cannot be a user's name and password, as one line; empty where they can.
std::string WhyUnusable(const std::string& name, const std::string& password);

class Accounts {
 public:
  using Clock = std::function<int64_t()>;  // seconds since some fixed moment

  Accounts(Database& database, Clock clock) : m_database(database), m_clock(std::move(clock)) {}

  bool HasUsers();
  std::vector<User> Users();  // by id
  std::optional<User> FindUser(const std::string& name);
  std::string UserName(int32_t id);  // empty where there is no such user
  bool UserExists(int32_t id);

  // False when there is one of that name. An id of 0 lets the store choose; throws a Refusal where none is left.
  bool AddUser(int32_t id, const std::string& name, const std::string& passwordHash, int32_t ptz);
  void UpdateUser(int32_t id, const std::string& name, int32_t ptz);
  // Ends the user's sessions. False when there is no such user.
  bool SetPassword(const std::string& name, const std::string& passwordHash);
  // Sessions and all else stay. False when another user has the new name; throws a Refusal when there is no such user.
  bool RenameUser(const std::string& name, const std::string& newName);
  // Ends the user's sessions, forgets the default view, and leaves word for the server, which deletes what was the
  // user's alone. False when there is no such user.
  bool DeleteUser(const std::string& name);
  std::vector<int32_t> DeletedUsers();  // whose word the server has not followed yet
  void ForgetDeletedUser(int32_t id);

  // The token of a new session.
  std::string OpenSession(int32_t userId, const std::string& client);
  // Who has that token; nothing where there is no such session or it has expired. It is a use of the session.
  std::optional<Caller> Authenticate(const std::string& token);
  // Uses a session without its token; false when it has ended.
  bool Touch(int64_t sessionId);
  std::vector<int64_t> SessionsOf(const std::string& name);
  void CloseSession(int64_t sessionId);
  bool HasSession(int64_t sessionId);

  // --- the uses that are not written yet

  using Uses = std::map<int64_t, int64_t>;  // when, by session; kEnded where it has expired
  static constexpr int64_t kEnded = 0;
  const Uses& Unwritten() const { return m_uses; }
  void Write(const Uses& uses);
  // These stand in the store now.
  void Forget(const Uses& written);
  void ForgetSession(int64_t sessionId) { m_uses.erase(sessionId); }

 private:
  // Who has used a session since then, as far as the store does not say so.
  std::set<int32_t> UsersOfUnwritten(int64_t since);

  Database& m_database;
  const Clock m_clock;
  Uses m_uses;
};

}  // namespace server
