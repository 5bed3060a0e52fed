// SPDX-License-Identifier: Apache-2.0
#include "server/site/ViewTables.h"

#include <map>

#include "server/documents/Replies.h"

namespace server {

namespace {

// The columns that groups and views have in common come first.
Item ReadItem(Query& row) {
  return {row.Int(0), row.String(1), row.Int(2), row.Int(3), row.Int(4), row.Int64(5), {}, {}};
}

}  // namespace

void ViewTables::Load(Catalog& catalog) {
  Query groups(m_database, "SELECT id, name, parent_id, user_id, sequence, change_number, shared_folder FROM groups");
  while (groups.Next()) {
    Group group{ReadItem(groups), groups.Int(6) != 0};
    group.head = std::make_shared<std::string>(GroupHead(group));
    catalog.groups.Put(std::make_shared<Group>(std::move(group)));
  }

  std::map<int32_t, std::vector<int32_t>> sharedWith;
  Query shares(m_database, "SELECT view_id, user_id FROM shares ORDER BY view_id, user_id");
  while (shares.Next()) sharedWith[shares.Int(0)].push_back(shares.Int(1));

  Query views(m_database,
              "SELECT v.id, v.name, v.group_id, v.user_id, v.sequence, v.change_number, v.guid, v.auto_cycle, "
              "v.cycle_time, v.document_id, d.text FROM views v JOIN documents d ON d.id = v.document_id");
  while (views.Next()) {
    View view{ReadItem(views), views.String(6), views.Int(7),
              views.Int(8),    views.Int64(9),  std::make_shared<std::string>(views.String(10))};
    if (const auto users = sharedWith.find(view.id); users != sharedWith.end()) {
      view.sharedWith = std::move(users->second);
    }
    view.head = std::make_shared<std::string>(ViewHead(view));
    catalog.views.Put(std::make_shared<View>(std::move(view)));
  }
}

void ViewTables::Save(Group& group) {
  Execute(m_database,
          "INSERT OR REPLACE INTO groups (id, name, parent_id, user_id, shared_folder, sequence, change_number) "
          "VALUES (nullif(?, 0),?,?,?,?,?,?)",
          group.id, group.name, group.folderId, group.userId, group.sharedFolder ? 1 : 0, group.sequence,
          group.changeNumber);
  group.id = static_cast<int32_t>(m_database.Handle().getLastInsertRowid());
  group.head = std::make_shared<std::string>(GroupHead(group));
}

void ViewTables::Save(View& view) {
  int64_t oldDocument = 0;
  if (view.documentId == 0) {
    Execute(m_database, "INSERT INTO documents (text) VALUES (?)", *view.document);
    view.documentId = m_database.Handle().getLastInsertRowid();
    Query old(m_database, "SELECT document_id FROM views WHERE id = ?", view.id);
    if (old.Next()) oldDocument = old.Int64(0);
  }
  Execute(m_database,
          "INSERT OR REPLACE INTO views (id, guid, name, group_id, user_id, sequence, auto_cycle, cycle_time, "
          "document_id, change_number) VALUES (nullif(?, 0),?,?,?,?,?,?,?,?,?)",
          view.id, view.guid, view.name, view.folderId, view.userId, view.sequence, view.autoCycle, view.cycleTime,
          view.documentId, view.changeNumber);
  view.id = static_cast<int32_t>(m_database.Handle().getLastInsertRowid());
  Execute(m_database, "DELETE FROM shares WHERE view_id = ?", view.id);
  for (int32_t user : view.sharedWith) {
    Execute(m_database, "INSERT INTO shares (view_id, user_id) VALUES (?,?)", view.id, user);
  }
  ForgetDocument(oldDocument);
  view.head = std::make_shared<std::string>(ViewHead(view));
}

void ViewTables::DeleteGroup(int32_t id) {
  Execute(m_database, "DELETE FROM groups WHERE id = ?", id);
}

void ViewTables::DeleteView(const View& view) {
  Execute(m_database, "DELETE FROM shares WHERE view_id = ?", view.id);
  Execute(m_database, "DELETE FROM views WHERE id = ?", view.id);
  ForgetDocument(view.documentId);
}

// A document goes with the last view or change that refers to it.
void ViewTables::ForgetDocument(int64_t documentId) {
  if (documentId == 0) return;
  Execute(m_database,
          "DELETE FROM documents WHERE id = ?1 AND NOT EXISTS (SELECT 1 FROM views WHERE document_id = ?1) "
          "AND NOT EXISTS (SELECT 1 FROM changes WHERE document_id = ?1)",
          documentId);
}

}  // namespace server
