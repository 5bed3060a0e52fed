// SPDX-License-Identifier: Apache-2.0
// What a seed makes of a site. Not thread-safe: its owner locks. What does not fit throws a Refusal or a
// std::runtime_error with one plain line.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "server/login/Accounts.h"
#include "server/model/Catalog.h"
#include "server/site/Resources.h"
#include "server/site/SeedFile.h"
#include "server/site/Step.h"
#include "server/store/Database.h"

namespace server {

class Seeding {
 public:
  // Hashes the passwords of new users. REQUIRES: no transaction is open; hashing takes long, and nobody else could open
  // the store meanwhile.
  Seeding(const SeedData& seed, Database& database, Accounts& accounts, Resources& resources, const Catalog& catalog);

  // Writes users, areas and elements; answers the steps of the groups and views that are new in the seed or changed in
  // it. REQUIRES: a transaction is open.
  std::vector<Step> Write();

 private:
  using Folder = std::pair<int32_t, int32_t>;  // folder, owner

  bool IsSeeded(const std::string& kind, int32_t id, const std::string& digest);
  void MarkSeeded(const std::string& kind, int32_t id, const std::string& digest);
  void WriteUsers();
  std::vector<Step> Steps();
  Step StepOf(const SeedGroup& entry);
  Step StepOf(const SeedView& entry);
  int32_t PlaceIn(ObjectKind kind, const Folder& folder, std::optional<int32_t> given);
  void Check(const std::vector<Step>& steps);
  void CheckUsers(const View& view);
  void CheckOwnerExists(int32_t owner);

  const SeedData& m_seed;
  Database& m_database;
  Accounts& m_accounts;
  Resources& m_resources;
  const Catalog& m_catalog;
  std::map<int32_t, std::string> m_newPasswords;                  // hashes, by user
  std::map<std::pair<ObjectKind, Folder>, int32_t> m_nextPlaces;  // for what has no place of its own
};

}  // namespace server
