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

// Changes users in one transaction, so that no other process does meanwhile; `edit` answers false for `why`.
template <class Edit>
void ChangeUsers(const std::string& data, Database::Use use, const char* why, const Edit& edit) {
  Database database(data, use);
  Accounts accounts(database, SecondsNow);
  Transaction transaction(database);
  try {
    if (!edit(accounts)) throw std::runtime_error(why);
  } catch (const Refusal& refusal) {
    throw std::runtime_error(refusal.detail);
  }
  transaction.Commit();
}

constexpr Database::Use kKnown = Database::Use::kKnownAccounts;
const char kNameTaken[] = "there is a user of that name";
const char kNoSuchUser[] = "no such user";

}  // namespace

void AddUser(const std::string& data, const std::string& name, const std::string& password) {
  NeedUsable(name, password);
  const std::string hash = HashPassword(password);
  ChangeUsers(data, Database::Use::kAccounts, kNameTaken,
              [&](Accounts& accounts) { return accounts.AddUser(0, name, hash, 0); });
}

void SetPassword(const std::string& data, const std::string& name, const std::string& password) {
  NeedStore(data);  // before anybody waits for the hash
  NeedUsable(name, password);
  const std::string hash = HashPassword(password);
  ChangeUsers(data, kKnown, kNoSuchUser, [&](Accounts& accounts) { return accounts.SetPassword(name, hash); });
}

void RenameUser(const std::string& data, const std::string& name, const std::string& newName) {
  NeedUsable(newName, "not asked for");
  ChangeUsers(data, kKnown, kNameTaken, [&](Accounts& accounts) { return accounts.RenameUser(name, newName); });
}

void DeleteUser(const std::string& data, const std::string& name) {
  ChangeUsers(data, kKnown, kNoSuchUser, [&](Accounts& accounts) { return accounts.DeleteUser(name); });
}

void ListUsers(const std::string& data, std::ostream& out) {
  Database database(data, kKnown);
  for (const User& user : Accounts(database, SecondsNow).Users()) out << user.id << '\t' << user.name << '\n';
}

}  // namespace server
