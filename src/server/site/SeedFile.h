// SPDX-License-Identifier: Apache-2.0
// A seed file: the users, areas, elements, groups and views that a site starts with.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "server/documents/Requests.h"
#include "server/site/Resources.h"

namespace server {

// A digest tells whether an entry is the one that was applied before; what users have made of it since then stays.
struct SeedUser {
  int32_t id = 0;
  std::string name, password, digest;
  int32_t ptz = 0;
};

struct SeedArea {
  int32_t id = 0;
  std::string name;
};

struct SeedGroup {
  int32_t id = 0;
  GroupInput input;
  std::optional<int32_t> sequence;
  std::string digest;
};

struct SeedView {
  int32_t id = 0;
  ViewInput input;
  std::string guid;  // empty: none given
  std::optional<int32_t> sequence;
  std::vector<int32_t> sharedWith;  // ascending
  std::string digest;
};

struct SeedData {
  std::vector<SeedUser> users;
  std::vector<SeedArea> areas;
  std::vector<Element> elements;
  std::vector<SeedGroup> groups;
  std::vector<SeedView> views;
};

// Throws std::runtime_error with one plain line that names the entry at fault.
SeedData ReadSeed(const std::string& file);

}  // namespace server
