// SPDX-License-Identifier: Apache-2.0
#include "server/site/SiteLoading.h"

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "server/documents/Replies.h"
#include "server/login/Accounts.h"
#include "server/site/SoundRow.h"

namespace server {

namespace {

class Loading {
 public:
  Loading(Database& database, Catalog& catalog, Findings& findings)
      : m_database(database), m_catalog(catalog), m_findings(findings) {}

  void Run() {
    ReadUsers();
    ReadGroups();
    PutGroups();
    ReadShares();
    ReadViews();
  }

 private:
  void ReadUsers() {
    Query users(m_database, "SELECT id FROM users WHERE id BETWEEN 1 AND 2147483647");
    while (users.Next()) m_users.insert(users.Int(0));
    // What is theirs is deleted by the next that serves.
    for (int32_t user : Accounts(m_database, SecondsNow).DeletedUsers()) m_users.insert(user);
  }

  int32_t OwnerIn(const SoundRow& row, int column) const {
    const int32_t owner = row.Int(column, "owner");
    if (owner != kNobody && !m_users.contains(owner)) {
      throw Damage{"its owner " + std::to_string(owner) + " does not exist"};
    }
    return owner;
  }

  void ReadGroups() {
    Query rows(m_database, "SELECT id, name, parent_id, user_id, shared_folder, sequence, change_number FROM groups");
    ForEachSoundRow(rows, "group", m_findings, [this](const SoundRow& row) {
      Group group;
      group.id = row.Id(0);
      group.name = row.Name(1);
      group.folderId = row.Int(2, "parent");
      group.userId = OwnerIn(row, 3);
      group.sharedFolder = row.Int(4, "shared_folder") != 0;
      group.sequence = row.Int(5, "sequence");
      group.changeNumber = row.Int64(6, "change_number", 0, kMaxChangeNumber);
      m_groups.emplace(group.id, std::move(group));
    });
  }

  // Whether something of that owner can lie there; else it is a finding.
  bool Fits(const std::string& what, int32_t folder, int32_t owner) {
    if (folder == kTopFolder) return true;
    const auto group = m_groups.find(folder);
    if (group != m_groups.end() && group->second.userId == owner) return true;
    m_findings.Add(what + " is shown at the top level: its group " + std::to_string(folder) +
                   (group == m_groups.end() ? " is not there" : " is another owner's"));
    return false;
  }

  void PutGroups() {
    for (auto& [id, group] : m_groups) {
      if (!Fits("group " + std::to_string(id), group.folderId, group.userId)) group.folderId = kTopFolder;
    }
    for (const auto& [id, group] : m_groups) OpenCircleAbove(id);
    for (auto& [id, group] : m_groups) {
      group.head = std::make_shared<std::string>(GroupHead(group));
      m_catalog.groups.Put(std::make_shared<Group>(group));
    }
  }

  // A way up that does not end at the top comes back to a group that it has passed.
  void OpenCircleAbove(int32_t id) {
    std::vector<int32_t> way;
    for (int32_t at = id; at != kTopFolder; at = m_groups.at(at).folderId) {
      if (m_passed.insert(at).second) {
        way.push_back(at);
        continue;
      }
      const auto circle = std::find(way.begin(), way.end(), at);  // else it is known to end
      if (circle != way.end()) Open(*std::min_element(circle, way.end()));
      return;
    }
  }

  void Open(int32_t id) {
    m_groups.at(id).folderId = kTopFolder;
    m_findings.Add("group " + std::to_string(id) + " is shown at the top level: it lies in itself");
  }

  void ReadShares() {
    Query shares(m_database, "SELECT view_id, user_id FROM shares ORDER BY view_id, user_id");
    while (shares.Next()) m_shares[shares.Int64(0)].push_back(shares.Int64(1));
  }

  std::vector<int32_t> SharesOf(const View& view) {
    std::vector<int32_t> sharedWith;
    const auto found = m_shares.find(view.id);
    if (found == m_shares.end()) return sharedWith;
    for (const int64_t user : found->second) {
      if (m_users.contains(user) && view.userId != kNobody && user != view.userId) {
        sharedWith.push_back(static_cast<int32_t>(user));
      } else {
        m_findings.Add("view " + std::to_string(view.id) + ": its share with user " + std::to_string(user) +
                       " is left out");
      }
    }
    return sharedWith;
  }

  void ReadViews() {
    Query rows(m_database,
               "SELECT v.id, v.guid, v.name, v.group_id, v.user_id, v.sequence, v.auto_cycle, v.cycle_time, "
               "v.document_id, d.text, v.change_number FROM views v LEFT JOIN documents d ON d.id = v.document_id");
    ForEachSoundRow(rows, "view", m_findings, [this](const SoundRow& row) { TakeView(row); });
  }

  void TakeView(const SoundRow& row) {
    View view;
    view.id = row.Id(0);
    view.guid = row.Text(1, "guid");
    view.name = row.Name(2);
    view.folderId = row.Int(3, "group");
    view.userId = OwnerIn(row, 4);
    view.sequence = row.Int(5, "sequence");
    view.autoCycle = row.Int(6, "auto_cycle");
    view.cycleTime = row.Int(7, "cycle_time");
    view.documentId = row.Int64(8, "document's number", 1, std::numeric_limits<int64_t>::max());
    std::string document = row.Text(9, "document");
    if (const char* why = WhyNoDocument(document)) throw Damage{std::string("in its document: ") + why};
    view.document = std::make_shared<std::string>(std::move(document));
    view.changeNumber = row.Int64(10, "change_number", 0, kMaxChangeNumber);
    if (!Fits("view " + std::to_string(view.id), view.folderId, view.userId)) view.folderId = kTopFolder;
    view.sharedWith = SharesOf(view);
    view.head = std::make_shared<std::string>(ViewHead(view));
    m_catalog.views.Put(std::make_shared<View>(std::move(view)));
  }

  Database& m_database;
  Catalog& m_catalog;
  Findings& m_findings;
  std::set<int64_t> m_users;
  std::map<int32_t, Group> m_groups;
  std::set<int32_t> m_passed;                        // on the ways up that have been looked at
  std::map<int64_t, std::vector<int64_t>> m_shares;  // ascending
};

}  // namespace

void LoadSite(Database& database, Catalog& catalog, Findings& findings) {
  Loading(database, catalog, findings).Run();
}

void CheckNames(Database& database, Findings& findings) {
  Query users(database, "SELECT id, name FROM users");
  ForEachSoundRow(users, "user", findings, [](const SoundRow& row) { row.Id(0), row.Name(1); });
  Query areas(database, "SELECT id, name FROM areas");
  ForEachSoundRow(areas, "area", findings, [](const SoundRow& row) { row.Id(0), row.Text(1, "name"); });
  Query elements(database, "SELECT id, name FROM elements");
  ForEachSoundRow(elements, "element", findings, [](const SoundRow& row) { row.Id(0), row.Text(1, "name"); });
}

}  // namespace server
