// SPDX-License-Identifier: Apache-2.0
#include "server/site/SeedFile.h"

#include <limits>
#include <set>
#include <stdexcept>

#include "server/documents/Json.h"
#include "server/login/Secrets.h"
#include "server/model/Refusal.h"
#include "server/permissions/Rules.h"

namespace server {

namespace {

using rapidjson::Value;

int32_t EntryId(const Value& entry) {
  const int32_t id = wire::Int(entry, "ID");
  if (id < 1) throw Refusal::Malformed("an ID is a number from 1");
  return id;
}

// The server gives ids behind the greatest one.
int32_t OwnId(const Value& entry) {
  const int32_t id = EntryId(entry);
  if (id == std::numeric_limits<int32_t>::max())
    throw Refusal::Malformed("an ID of 2147483647 would leave none for others");
  return id;
}

std::optional<int32_t> Sequence(const Value& entry) {
  if (wire::Find(entry, "SequenceIndex") == nullptr) return std::nullopt;
  return wire::Int(entry, "SequenceIndex");
}

SeedUser ReadUser(const Value& entry) {
  SeedUser user;
  user.id = OwnId(entry);
  user.name = wire::String(entry, "Name");
  CheckName(user.name);
  user.password = wire::String(entry, "Password");
  if (user.password.empty()) throw Refusal::Malformed("a password is not empty");
  user.ptz = wire::Int(entry, "PTZControlPermission", 0);
  user.digest = Digest(user.name + '\n' + std::to_string(user.ptz));  // nothing of the password, not even its hash
  return user;
}

std::vector<int32_t> ReadSharedWith(const Value& entry) {
  std::set<int32_t> users;
  const Value* list = wire::Find(entry, "SharedWith");
  if (list == nullptr) return {};
  if (!list->IsArray()) throw Refusal::Malformed("SharedWith is not a list");
  for (const Value& user : list->GetArray()) {
    if (!user.IsInt()) throw Refusal::Malformed("SharedWith is not a list of user ids");
    users.insert(user.GetInt());
  }
  return {users.begin(), users.end()};
}

SeedView ReadSeedView(const Value& entry) {
  SeedView view;
  view.digest = Digest(wire::Serialise(entry));
  view.id = OwnId(entry);
  view.guid = wire::String(entry, "GUID", "");
  view.sequence = Sequence(entry);
  view.sharedWith = ReadSharedWith(entry);
  view.input = ReadView(entry);
  return view;
}

// Reads each entry of one of the file's lists; says which one is at fault.
template <class Read>
void ReadEntries(const std::string& file, rapidjson::Document& seed, const char* key, const Read& read) {
  const auto list = seed.FindMember(key);
  if (list == seed.MemberEnd()) return;
  if (!list->value.IsArray()) throw std::runtime_error("seed " + file + ": " + key + " is not a list");
  std::set<int32_t> ids;
  for (Value& entry : list->value.GetArray()) {
    try {
      if (!entry.IsObject()) throw Refusal::Malformed("not an object");
      if (!ids.insert(EntryId(entry)).second) throw Refusal::Malformed("this ID stands there twice");
      read(entry);
    } catch (const Refusal& refusal) {
      const auto at = &entry - list->value.Begin();
      throw std::runtime_error("seed " + file + ": " + key + "[" + std::to_string(at) + "]: " + refusal.detail);
    }
  }
}

}  // namespace

SeedData ReadSeed(const std::string& file) {
  rapidjson::Document seed = wire::ReadFile("seed " + file, file);
  SeedData data;
  ReadEntries(file, seed, "Users", [&data](Value& entry) { data.users.push_back(ReadUser(entry)); });
  ReadEntries(file, seed, "Areas", [&data](Value& entry) {
    data.areas.push_back({EntryId(entry), wire::String(entry, "Name")});
  });
  ReadEntries(file, seed, "Elements", [&data](Value& entry) {
    data.elements.push_back(
        {EntryId(entry), wire::Int(entry, "Type"), wire::String(entry, "Name"), wire::Int(entry, "SiteID", -1)});
  });
  ReadEntries(file, seed, "ViewGroups", [&data](Value& entry) {
    data.groups.push_back({OwnId(entry), ReadGroup(entry), Sequence(entry), Digest(wire::Serialise(entry))});
  });
  ReadEntries(file, seed, "Views", [&data](const Value& entry) { data.views.push_back(ReadSeedView(entry)); });
  return data;
}

}  // namespace server
