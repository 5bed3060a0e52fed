// SPDX-License-Identifier: Apache-2.0
#include "server/site/SeedFile.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "server/documents/Json.h"
#include "server/login/Secrets.h"
#include "server/permissions/Rules.h"
#include "server/site/Site.h"

namespace server {

namespace {

using rapidjson::Value;
using Allocator = rapidjson::Document::AllocatorType;

int32_t EntryId(const Value& entry) {
  const int32_t id = json::Int(entry, "ID");
  if (id < 1) throw Malformed("an ID is a number from 1");
  return id;
}

std::optional<int32_t> Sequence(const Value& entry) {
  if (json::Find(entry, "SequenceIndex") == nullptr) return std::nullopt;
  return json::Int(entry, "SequenceIndex");
}

SeedUser ReadUser(const Value& entry) {
  SeedUser user;
  user.id = EntryId(entry);
  user.name = json::String(entry, "Name");
  CheckName(user.name);
  user.password = json::String(entry, "Password");
  if (user.password.empty()) throw Malformed("a password is not empty");
  user.ptz = json::Int(entry, "PTZControlPermission", 0);
  user.digest = Digest(user.name + '\n' + std::to_string(user.ptz));  // nothing of the password, not even its hash
  return user;
}

std::vector<int32_t> ReadSharedWith(const Value& entry) {
  std::set<int32_t> users;
  const Value* list = json::Find(entry, "SharedWith");
  if (list == nullptr) return {};
  if (!list->IsArray()) throw Malformed("SharedWith is not a list");
  for (const Value& user : list->GetArray()) {
    if (!user.IsInt()) throw Malformed("SharedWith is not a list of user ids");
    users.insert(user.GetInt());
  }
  return {users.begin(), users.end()};
}

SeedView ReadSeedView(Value& entry, Allocator& allocator) {
  SeedView view;
  view.digest = Digest(json::Serialise(entry));
  view.id = EntryId(entry);
  view.guid = json::String(entry, "GUID", "");
  view.sequence = Sequence(entry);
  view.sharedWith = ReadSharedWith(entry);
  view.input = ReadView(entry, allocator);
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
      if (!entry.IsObject()) throw Malformed("not an object");
      if (!ids.insert(EntryId(entry)).second) throw Malformed("this ID stands there twice");
      read(entry);
    } catch (const Refusal& refusal) {
      const auto at = &entry - list->value.Begin();
      throw std::runtime_error("seed " + file + ": " + key + "[" + std::to_string(at) + "]: " + refusal.detail);
    }
  }
}

}  // namespace

SeedData ReadSeed(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::stringstream text;
  if (stream) text << stream.rdbuf();
  if (!stream || text.str().empty()) throw std::runtime_error("cannot read seed " + file);
  rapidjson::Document seed;
  try {
    seed = json::Parse(text.str());
  } catch (const Refusal&) {
    throw std::runtime_error("seed " + file + " is not a JSON object");
  }
  SeedData data;
  ReadEntries(file, seed, "Users", [&data](Value& entry) { data.users.push_back(ReadUser(entry)); });
  ReadEntries(file, seed, "Areas", [&data](Value& entry) {
    data.areas.push_back({EntryId(entry), json::String(entry, "Name")});
  });
  ReadEntries(file, seed, "Elements", [&data](Value& entry) {
    data.elements.push_back(
        {EntryId(entry), json::Int(entry, "Type"), json::String(entry, "Name"), json::Int(entry, "SiteID", -1)});
  });
  ReadEntries(file, seed, "ViewGroups", [&data](Value& entry) {
    data.groups.push_back({EntryId(entry), ReadGroup(entry), Sequence(entry), Digest(json::Serialise(entry))});
  });
  ReadEntries(file, seed, "Views",
              [&data, &seed](Value& entry) { data.views.push_back(ReadSeedView(entry, seed.GetAllocator())); });
  return data;
}

bool Site::IsSeeded(const std::string& kind, int32_t id, const std::string& digest) {
  Query query(m_database, "SELECT digest FROM seeded WHERE kind = ? AND id = ?", kind, id);
  return query.Next() && query.String(0) == digest;
}

void Site::MarkSeeded(const std::string& kind, int32_t id, const std::string& digest) {
  Execute(m_database, "INSERT OR REPLACE INTO seeded (kind, id, digest) VALUES (?,?,?)", kind, id, digest);
}

// Hashed before the transaction, during which another process could not open the store.
std::map<int32_t, std::string> Site::HashNewPasswords(const SeedData& seed) {
  std::map<int32_t, std::string> hashes;
  for (const SeedUser& user : seed.users) {
    if (!m_accounts.UserExists(user.id)) hashes[user.id] = HashPassword(user.password);
  }
  return hashes;
}

void Site::SeedUsers(const SeedData& seed, const std::map<int32_t, std::string>& passwordHashes) {
  for (const SeedUser& user : seed.users) {
    if (IsSeeded("user", user.id, user.digest)) continue;
    const std::optional<User> namesake = m_accounts.FindUser(user.name);
    if (namesake && namesake->id != user.id) throw std::runtime_error("seed: there is another user " + user.name);
    const auto hash = passwordHashes.find(user.id);
    if (hash == passwordHashes.end()) {
      m_accounts.UpdateUser(user.id, user.name, user.ptz);
    } else {
      m_accounts.AddUser(user.id, user.name, hash->second, user.ptz);
    }
    MarkSeeded("user", user.id, user.digest);
  }
}

std::vector<Site::Step> Site::SeedSteps(const SeedData& seed) {
  std::vector<Step> steps;
  std::map<std::pair<int32_t, int32_t>, int32_t> next[2];  // by folder and owner; for what has no place of its own
  const auto place = [this, &next](Kind kind, int32_t folder, int32_t owner, std::optional<int32_t> given) {
    int32_t& at = next[kind == Kind::kView ? 1 : 0].try_emplace({folder, owner}, 0).first->second;
    if (at == 0) at = m_catalog.NextSequence(kind, folder, owner);
    const int32_t sequence = given.value_or(at);
    if (sequence < std::numeric_limits<int32_t>::max()) at = std::max(at, sequence + 1);
    return sequence;
  };
  for (const SeedGroup& entry : seed.groups) {
    if (IsSeeded("group", entry.id, entry.digest)) continue;
    const GroupInput& input = entry.input;
    auto group = std::make_shared<Group>(Group{entry.id,
                                               input.name,
                                               input.parentId,
                                               input.userId,
                                               input.sharedFolder,
                                               place(Kind::kGroup, input.parentId, input.userId, entry.sequence),
                                               0,
                                               {}});
    steps.push_back(GroupStep(m_catalog.FindGroup(entry.id), std::move(group)));
  }
  for (const SeedView& entry : seed.views) {
    if (IsSeeded("view", entry.id, entry.digest)) continue;
    const ViewInput& input = entry.input;
    const ViewPtr old = m_catalog.FindView(entry.id);
    auto view = std::make_shared<View>();
    view->id = entry.id;
    view->guid = !entry.guid.empty() ? entry.guid : old ? old->guid : MakeGuid();
    view->name = input.name;
    view->groupId = input.groupId;
    view->userId = input.userId;
    view->sequence = place(Kind::kView, input.groupId, input.userId, entry.sequence);
    view->autoCycle = input.autoCycle;
    view->cycleTime = input.cycleTime;
    view->sharedWith = entry.sharedWith;
    view->document = std::make_shared<std::string>(input.document);
    steps.push_back(ViewStep(old, std::move(view)));
  }
  return steps;
}

void Site::Apply(const SeedData& seed) {
  Locked locked(m_mutex);
  try {
    const std::map<int32_t, std::string> passwordHashes = HashNewPasswords(seed);
    Transaction transaction(m_database);
    SeedUsers(seed, passwordHashes);
    for (const SeedArea& area : seed.areas) m_resources.PutArea(area.id, area.name);
    for (const Element& element : seed.elements) m_resources.PutElement(element);

    std::vector<Step> steps = SeedSteps(seed);
    Catalog after = m_catalog;
    ApplyTo(after, steps);
    CheckContainment(after);
    for (const Step& step : steps) {
      const int32_t owner = step.newView ? step.newView->userId : step.newGroup->userId;
      if (owner != kNobody && !m_accounts.UserExists(owner)) throw std::runtime_error("seed: an owner is no user");
      if (!step.newView) continue;
      if (owner == kNobody && !step.newView->sharedWith.empty())
        throw std::runtime_error("seed: a public view is shared");
      for (int32_t user : step.newView->sharedWith) {
        if (user == owner || !m_accounts.UserExists(user))
          throw std::runtime_error("seed: a view is shared with nobody");
      }
    }
    for (const SeedGroup& entry : seed.groups) MarkSeeded("group", entry.id, entry.digest);
    for (const SeedView& entry : seed.views) MarkSeeded("view", entry.id, entry.digest);

    std::vector<Change> changes;
    Write({}, steps, changes);
    transaction.Commit();
    ApplyCommitted(steps);
    m_log.Committed(changes);
    m_hub.Publish(changes, locked.wake);
  } catch (const Refusal& refusal) {
    throw std::runtime_error(std::string("seed: the groups and views do not fit: ") + refusal.detail);
  } catch (const SQLite::Exception& e) {
    throw std::runtime_error(std::string("seed: ") + e.what());
  }
}

}  // namespace server
