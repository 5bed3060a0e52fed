// SPDX-License-Identifier: Apache-2.0
// Users and their sessions. Both live in the store and nowhere else, so that another process may add a user or change
// a password while the server runs. Passwords are not compared here: see Login in api/Api.cpp. Not thread-safe: its
// owner locks.
#pragma once

#include <functional>
#include <optional>
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

  // False when there is one of that name. An id of 0 lets the store choose.
  bool AddUser(int32_t id, const std::string& name, const std::string& passwordHash, int32_t ptz);
  void UpdateUser(int32_t id, const std::string& name, int32_t ptz);
  // Ends the user's sessions. False when there is no such user.
  bool SetPassword(const std::string& name, const std::string& passwordHash);

  // The token of a new session.
  std::string OpenSession(int32_t userId, const std::string& client);
  // Who has that token; nothing where there is no such session or it has expired. It is a use of the session, which
  // goes unrecorded where the store cannot be written.
  std::optional<Caller> Authenticate(const std::string& token);
  // Uses a session without its token; false when it has ended.
  bool Touch(int64_t sessionId);
  void CloseSession(int64_t sessionId);

 private:
  Database& m_database;
  const Clock m_clock;
};

}  // namespace server
