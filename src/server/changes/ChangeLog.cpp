// SPDX-License-Identifier: Apache-2.0
#include "server/changes/ChangeLog.h"

#include <algorithm>
#include <limits>

namespace server {

ChangeLog::ChangeLog(Database& database, uint64_t keep)
    : m_database(database),
      m_keep(static_cast<int64_t>(std::min<uint64_t>(keep, std::numeric_limits<int32_t>::max()))) {
  Query last(m_database, "SELECT seq FROM sqlite_sequence WHERE name = 'changes'");
  if (last.Next()) m_last = last.Int64(0);
  Query oldest(m_database, "SELECT coalesce(min(number), ?) FROM changes WHERE number > 0", m_last + 1);
  oldest.Next();
  m_oldest = oldest.Int64(0);
}

void ChangeLog::Append(const std::vector<Change>& changes) {
  for (const Change& change : changes) {
    Execute(m_database,
            "INSERT INTO changes (number, kind, object_id, session_id, content_changed, before, after, head, "
            "shared_head, document_id) VALUES (?,?,?,?,?,?,?,?,?,?)",
            change.number, static_cast<int>(change.kind), change.id, change.sessionId, change.contentChanged ? 1 : 0,
            change.before.ToText(), change.after.ToText(), change.head, change.sharedHead, change.documentId);
  }
  Trim((changes.empty() ? m_last : changes.back().number) - m_keep);
}

void ChangeLog::Trim(int64_t upTo) {
  if (upTo < m_oldest) return;
  Execute(m_database,
          "DELETE FROM documents WHERE id IN (SELECT document_id FROM changes WHERE number <= ?1) "
          "AND NOT EXISTS (SELECT 1 FROM views WHERE document_id = documents.id) "
          "AND NOT EXISTS (SELECT 1 FROM changes WHERE document_id = documents.id AND number > ?1)",
          upTo);
  Execute(m_database, "DELETE FROM changes WHERE number <= ?", upTo);
}

void ChangeLog::Committed(const std::vector<Change>& changes) {
  m_last += static_cast<int64_t>(changes.size());
  m_oldest = std::max(m_oldest, m_last - m_keep + 1);
}

std::vector<Change> ChangeLog::Read(int64_t number, size_t limit, size_t maxBytes) {
  Query query(m_database,
              "SELECT c.number, c.kind, c.object_id, c.session_id, c.content_changed, c.before, c.after, c.head, "
              "c.shared_head, c.document_id, d.text FROM changes c LEFT JOIN documents d ON d.id = c.document_id "
              "WHERE c.number > ? ORDER BY c.number",
              number);
  std::vector<Change> changes;
  for (size_t bytes = 0; changes.size() < limit && bytes < maxBytes && query.Next();) {
    Change& change = changes.emplace_back();
    change.number = query.Int64(0);
    change.kind = static_cast<ObjectKind>(query.Int(1));
    change.id = query.Int(2);
    change.sessionId = query.Int64(3);
    change.contentChanged = query.Int(4) != 0;
    change.before = Audience::FromText(query.String(5));
    change.after = Audience::FromText(query.String(6));
    change.head = query.String(7);
    change.sharedHead = query.String(8);
    change.documentId = query.Int64(9);
    if (change.documentId != 0) change.document = std::make_shared<std::string>(query.String(10));
    bytes += change.head.size() + (change.document ? change.document->size() : 0);
  }
  return changes;
}

}  // namespace server
