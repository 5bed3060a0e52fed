// SPDX-License-Identifier: Apache-2.0
#include "server/changes/ChangeLog.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "server/documents/Requests.h"

namespace server {

namespace {

constexpr int64_t kTrimAtOnce = 1000;
// A piece ends when one of these is reached.
constexpr int kPieceChanges = 500;
constexpr size_t kPieceAudiences = size_t{256} << 10;
constexpr size_t kPieceBytes = size_t{1} << 20;

// What a damaged row has for its bytes counts for something.
const char kKeptSql[] =
    "SELECT coalesce(min(number), ?), total(min(max(bytes, 0), 1099511627776)) FROM changes WHERE number > 0";
const char kFreedSql[] = "SELECT total(min(max(bytes, 0), 1099511627776)) FROM changes WHERE number <= ?";
const char kHeirsSql[] =
    "SELECT min(c.number), length(CAST(d.text AS BLOB)) FROM changes c JOIN documents d ON d.id = c.document_id "
    "WHERE c.number > ?1 AND d.id IN (SELECT document_id FROM changes WHERE number <= ?1) GROUP BY d.id";
const char kBytesSql[] = "SELECT number, min(max(bytes, 0), 1099511627776) FROM changes ORDER BY number LIMIT ?";

int64_t Bounded(uint64_t value) {
  return static_cast<int64_t>(std::min<uint64_t>(value, std::numeric_limits<int64_t>::max() / 2));
}

// What the store remembers; where that is damaged, what rows show was given.
int64_t LastNumber(Database& database) {
  int64_t last = 0;
  for (const char* sql : {"SELECT max(seq) FROM sqlite_sequence WHERE name = 'changes' AND seq BETWEEN 0 AND ?",
                          "SELECT max(number) FROM changes WHERE number BETWEEN 0 AND ?",
                          "SELECT max(change_number) FROM groups WHERE change_number BETWEEN 0 AND ?",
                          "SELECT max(change_number) FROM views WHERE change_number BETWEEN 0 AND ?"}) {
    Query query(database, sql, kMaxChangeNumber);
    query.Next();
    last = std::max(last, query.Int64(0));
  }
  return last;
}

}  // namespace

bool IsSound(const Change& change) {
  const bool isSeen = change.after.everybody || !change.after.users.empty();
  const bool isShared = change.after.users.size() > 1;
  return (!isSeen || IsHead(change.head)) && (!isShared || IsHead(change.sharedHead)) &&
         (!change.isDocumentUnchecked || WhyNoDocument(*change.document) == nullptr);
}

ChangeLog::ChangeLog(Database& database, const LogLimits& limits)
    : m_database(database), m_maxChanges(Bounded(limits.changes)), m_maxBytes(Bounded(limits.bytes)) {
  m_range.last = LastNumber(m_database);
  Query kept(m_database, kKeptSql, m_range.last + 1);
  kept.Next();
  m_range.oldest = kept.Int64(0);
  m_range.bytes = kept.Int64(1);
}

void ChangeLog::Append(const Change& change) {
  const std::string before = change.before.ToText(), after = change.after.ToText();
  const size_t document = change.document && !HasChangeWith(change.documentId) ? change.document->size() : 0;
  const auto bytes =
      static_cast<int64_t>(before.size() + after.size() + change.head.size() + change.sharedHead.size() + document);
  Execute(m_database,
          "INSERT INTO changes (number, kind, object_id, session_id, content_changed, before, after, head, "
          "shared_head, document_id, bytes) VALUES (?,?,?,?,?,?,?,?,?,?,?)",
          change.number, static_cast<int>(change.kind), change.id, change.sessionId, change.contentChanged ? 1 : 0,
          before, after, change.head, change.sharedHead, change.documentId, bytes);
  m_range.last = change.number;
  m_range.bytes += bytes;
  ++m_appended;
}

bool ChangeLog::HasChangeWith(int64_t documentId) {
  Query change(m_database, "SELECT 1 FROM changes WHERE document_id = ? LIMIT 1", documentId);
  return documentId != 0 && change.Next();
}

// A document counts for the first change that has it. Where that one goes, it counts for the next.
void ChangeLog::CountLater(int64_t upTo) {
  std::vector<std::pair<int64_t, int64_t>> heirs;
  {
    Query rows(m_database, kHeirsSql, upTo);
    while (rows.Next()) heirs.emplace_back(rows.Int64(0), rows.Int64(1));
  }
  for (const auto& [number, bytes] : heirs) {
    Execute(m_database, "UPDATE changes SET bytes = max(bytes, 0) + ? WHERE number = ?", bytes, number);
    m_range.bytes += bytes;
  }
}

void ChangeLog::Trim() {
  const int64_t most = m_range.oldest - 1 + kTrimAtOnce + m_appended;
  // More than once where documents outlast the change that they counted for.
  for (int64_t upTo = 0; (upTo = std::min(FirstToKeep() - 1, most)) >= m_range.oldest;) Trim(upTo);
  m_appended = 0;
}

void ChangeLog::Trim(int64_t upTo) {
  CountLater(upTo);
  Query freed(m_database, kFreedSql, upTo);
  freed.Next();
  m_range.bytes -= freed.Int64(0);
  Execute(m_database,
          "DELETE FROM documents WHERE id IN (SELECT document_id FROM changes WHERE number <= ?1) "
          "AND NOT EXISTS (SELECT 1 FROM views WHERE document_id = documents.id) "
          "AND NOT EXISTS (SELECT 1 FROM changes WHERE document_id = documents.id AND number > ?1)",
          upTo);
  Execute(m_database, "DELETE FROM changes WHERE number <= ?", upTo);
  m_range.oldest = upTo + 1;
}

int64_t ChangeLog::FirstToKeep() {
  int64_t first = std::max(m_range.oldest, m_range.last - m_maxChanges + 1);
  if (m_range.bytes <= m_maxBytes) return first;
  Query rows(m_database, kBytesSql, kTrimAtOnce + m_appended);
  for (int64_t left = m_range.bytes; left > m_maxBytes && rows.Next(); left -= rows.Int64(1)) {
    first = std::max(first, std::min(rows.Int64(0) + 1, m_range.last));
  }
  return first;
}

namespace {

Change HeadOfChange(Query& row) {
  Change change;
  change.number = row.Int64(0);
  change.kind = static_cast<ObjectKind>(row.Int(1));
  change.id = row.Int(2);
  change.sessionId = row.Int64(3);
  change.contentChanged = row.Int(4) != 0;
  return change;
}

// What a listener needs beside the audiences. The row's longer columns are read here and not before.
void Complete(Change& change, Query& row, Database& database, const DocumentAtHand& atHand) {
  change.head = row.String(7);
  change.sharedHead = row.String(8);
  change.documentId = row.Int64(9);
  if (change.documentId == 0) return;
  change.document = atHand(change.id, change.documentId);
  if (change.document) return;
  change.isDocumentUnchecked = true;
  Query document(database, "SELECT text FROM documents WHERE id = ?", change.documentId);
  change.document = std::make_shared<std::string>(document.Next() ? document.String(0) : std::string());
}

size_t SizeOf(const Change& change) {
  return change.head.size() + (change.document ? change.document->size() : 0);
}

}  // namespace

ChangePiece ReadChangePiece(Database& database, int32_t listener, int64_t after, int64_t last,
                            const DocumentAtHand& atHand) {
  Query rows(database,
             "SELECT number, kind, object_id, session_id, content_changed, before, after, head, shared_head, "
             "document_id FROM changes WHERE number > ? AND number <= ? ORDER BY number LIMIT ?",
             after, last, kPieceChanges);
  ChangePiece piece{{}, last};
  int count = 0;
  for (size_t audiences = 0, bytes = 0; rows.Next();) {
    Change change = HeadOfChange(rows);
    const std::string beforeText = rows.String(5), afterText = rows.String(6);
    audiences += beforeText.size() + afterText.size();
    change.before = Audience::FromText(beforeText);
    change.after = Audience::FromText(afterText);
    const int64_t number = change.number;
    if (MethodFor(change, listener)) {
      Complete(change, rows, database, atHand);
      bytes += SizeOf(change);
      piece.changes.push_back(std::move(change));
    }
    if (++count == kPieceChanges || audiences >= kPieceAudiences || bytes >= kPieceBytes) {
      piece.upTo = number;
      break;
    }
  }
  return piece;
}

}  // namespace server
