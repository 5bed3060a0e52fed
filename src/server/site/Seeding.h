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
  using Passwords = std::map<int32_t, std::string>;  // hashes, by user

  // `newPasswords` are those of the users that are new. Hashing takes long, so that it is done before a transaction is
  // open: nobody else could write to the store meanwhile.
  Seeding(const SeedData& seed, Database& database, Accounts& accounts, Resources& resources, const Catalog& catalog,
          const Passwords& newPasswords)
      : m_seed(seed),
        m_database(database),
        m_accounts(accounts),
        m_resources(resources),
        m_catalog(catalog),
        m_newPasswords(newPasswords) {}

  // Writes users, areas and elements; answers the steps of the groups and views that are new in the seed or changed in
  // it. REQUIRES: a transaction is open.
  std::vector<Step> Write();

 private:
  using Folder = std::pair<int32_t, int32_t>;  // folder, owner

  bool IsSeeded(const std::string& kind, int32_t id);  // in whatever form
  bool IsSeeded(const std::string& kind, int32_t id, const std::string& digest);
  void MarkSeeded(const std::string& kind, int32_t id, const std::string& digest);
  void WriteUsers();
  bool IsLeftOut(const SeedGroup& entry);
  bool IsLeftOut(const SeedView& entry);
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
  const Passwords& m_newPasswords;
  std::map<std::pair<ObjectKind, Folder>, int32_t> m_nextPlaces;  // for what has no place of its own
};

}  // namespace server
