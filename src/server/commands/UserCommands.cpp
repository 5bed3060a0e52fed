// SPDX-License-Identifier: Apache-2.0
#include <SQLiteCpp/Exception.h>

#include <ostream>
#include <stdexcept>

#include "server/commands/Commands.h"
#include "server/login/Accounts.h"
#include "server/login/Secrets.h"
#include "server/model/Refusal.h"
#include "server/store/Database.h"
#include "server/store/StoreIdentity.h"

namespace server {

namespace {

void NeedUsable(const std::string& name, const std::string& password) {
  const std::string why = WhyUnusable(name, password);
  if (!why.empty()) throw std::runtime_error(why);
}

void Need(bool done, const char* why) {
  if (!done) throw std::runtime_error(why);
}

struct Store {
  explicit Store(const std::string& data, Database::Use use = Database::Use::kKnownAccounts)
      : database(data, use), accounts(database, SecondsNow) {}
  Database database;
  Accounts accounts;
};

}  // namespace

void AddUser(const std::string& data, const std::string& name, const std::string& password) {
  NeedUsable(name, password);
  const std::string hash = HashPassword(password);
  Need(Store(data, Database::Use::kAccounts).accounts.AddUser(0, name, hash, 0), "there is a user of that name");
}

void SetPassword(const std::string& data, const std::string& name, const std::string& password) {
  NeedStore(data);  // before anybody waits for the hash
  NeedUsable(name, password);
  const std::string hash = HashPassword(password);
  Need(Store(data).accounts.SetPassword(name, hash), "no such user");
}

void RenameUser(const std::string& data, const std::string& name, const std::string& newName) try {
  NeedUsable(newName, "not asked for");
  Need(Store(data).accounts.RenameUser(name, newName), "there is a user of that name");
} catch (const Refusal& refusal) {
  throw std::runtime_error(refusal.detail);
}

void DeleteUser(const std::string& data, const std::string& name) {
  Need(Store(data).accounts.DeleteUser(name), "no such user");
}

void ListUsers(const std::string& data, std::ostream& out) {
  for (const User& user : Store(data).accounts.Users()) out << user.id << '\t' << user.name << '\n';
}

}  // namespace server
