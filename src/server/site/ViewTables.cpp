// SPDX-License-Identifier: Apache-2.0
#include "server/site/ViewTables.h"

#include "server/documents/Replies.h"
#include "server/model/Refusal.h"

namespace server {

namespace {

int32_t NewId(Database& database, const char* table) {
  const int32_t id = NextId(database, table);
  if (id == 0) throw Refusal::NoIdsLeft();
  return id;
}

}  // namespace

void ViewTables::Save(Group& group) {
  if (group.id == 0) group.id = NewId(m_database, "groups");
  Execute(m_database,
          "INSERT OR REPLACE INTO groups (id, name, parent_id, user_id, shared_folder, sequence, change_number) "
          "VALUES (?,?,?,?,?,?,?)",
          group.id, group.name, group.folderId, group.userId, group.sharedFolder ? 1 : 0, group.sequence,
          group.changeNumber);
  group.head = std::make_shared<std::string>(GroupHead(group));
}

void ViewTables::Save(View& view) {
  if (view.id == 0) view.id = NewId(m_database, "views");
  int64_t oldDocument = 0;
  if (view.documentId == 0) {
    Execute(m_database, "INSERT INTO documents (text) VALUES (?)", *view.document);
    view.documentId = m_database.Handle().getLastInsertRowid();
    Query old(m_database, "SELECT document_id FROM views WHERE id = ?", view.id);
    if (old.Next()) oldDocument = old.Int64(0);
  }
  Execute(m_database,
          "INSERT OR REPLACE INTO views (id, guid, name, group_id, user_id, sequence, auto_cycle, cycle_time, "
          "document_id, change_number) VALUES (?,?,?,?,?,?,?,?,?,?)",
          view.id, view.guid, view.name, view.folderId, view.userId, view.sequence, view.autoCycle, view.cycleTime,
          view.documentId, view.changeNumber);
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
