// SPDX-License-Identifier: Apache-2.0
#include <SQLiteCpp/Exception.h>

#include <algorithm>
#include <limits>
#include <ostream>
#include <stdexcept>

#include "server/commands/Commands.h"
#include "server/documents/Requests.h"
#include "server/model/Catalog.h"
#include "server/site/SiteLoading.h"
#include "server/site/SoundRow.h"
#include "server/store/Database.h"
#include "server/store/Findings.h"

namespace server {

namespace {

constexpr int64_t kMaxNumber = std::numeric_limits<int64_t>::max();
constexpr int64_t kMaxBytes = int64_t{1} << 40;  // of a change; more is damage

class Check {
 public:
  Check(Database& database, Findings& findings) : m_database(database), m_findings(findings) {}

  std::string Run() {
    Part("the file", [this] { CheckFile(); });
    Part("groups and views", [this] { LoadSite(m_database, m_catalog, m_findings); });
    Part("users, areas and elements", [this] { CheckNames(m_database, m_findings); });
    Part("changes", [this] { CheckChanges(); });
    Part("histories", [this] { CheckEpochs(); });
    Part("shares and documents", [this] { CheckReferences(); });
    Part("ids", [this] { CheckIds(); });
    return std::to_string(m_catalog.groups.All().size()) + " groups, " + std::to_string(m_catalog.views.All().size()) +
           " views, " + std::to_string(m_changes) + " changes";
  }

 private:
  // Where one part of the file cannot be read the others are still looked at.
  template <class Action>
  void Part(const char* name, const Action& action) {
    try {
      action();
    } catch (const SQLite::Exception& e) {
      m_findings.Add(std::string(name) + " cannot be read: " + e.what());
    }
  }

  void CheckFile() {
    Query lines(m_database, "PRAGMA integrity_check");
    while (lines.Next()) {
      std::string line = lines.String(0);
      std::replace(line.begin(), line.end(), '\n', ' ');
      if (line != "ok") m_findings.Add("the file: " + line);
    }
  }

  void CheckChanges() {
    Query rows(m_database,
               "SELECT c.number, c.kind, c.object_id, c.session_id, c.content_changed, c.before, c.after, c.head, "
               "c.shared_head, c.document_id, d.id IS NOT NULL, d.text, c.bytes FROM changes c "
               "LEFT JOIN documents d ON d.id = c.document_id ORDER BY c.number");
    int64_t last = 0;
    ForEachSoundRow(rows, "change", m_findings, [&](const SoundRow& row) {
      const int64_t number = row.Int64(0, "number", 1, kMaxNumber);
      if (last != 0 && number != last + 1) m_findings.Add("change " + std::to_string(last + 1) + " is missing");
      last = number;
      ++m_changes;
      CheckChange(row);
    });
  }

  static void CheckChange(const SoundRow& row) {
    row.Int64(1, "kind", 1, 2);
    row.Id(2);
    row.Int64(3, "session", 0, kMaxNumber);
    row.Int64(4, "content_changed", 0, 1);
    row.Int64(12, "bytes", 0, kMaxBytes);
    row.Text(5, "list of users before");
    const std::string after = row.Text(6, "list of users after");
    const std::string head = row.Text(7, "head");
    const std::string sharedHead = row.Text(8, "shared_head");
    const bool isShared = after.find(',') != std::string::npos;
    if ((!after.empty() && !IsHead(head)) || (isShared && !IsHead(sharedHead))) throw Damage{"its head is not JSON"};
    if (row.Int64(9, "document's number", 0, kMaxNumber) == 0) return;
    if (row.Int64(10, "document", 0, 1) == 0) throw Damage{"its document is not there"};
    if (const char* why = WhyNoDocument(row.Text(11, "document"))) throw Damage{std::string("in its document: ") + why};
  }

  // Each start of a server began one.
  void CheckEpochs() {
    Query lastChange(m_database,
                     "SELECT max(coalesce((SELECT max(seq) FROM sqlite_sequence WHERE name = 'changes'), 0), "
                     "coalesce((SELECT max(number) FROM changes), 0))");
    lastChange.Next();
    const int64_t most = std::min(lastChange.Int64(0), kMaxChangeNumber) + 1;
    Query rows(m_database, "SELECT number, id, first_change FROM epochs ORDER BY number");
    int64_t last = 1;
    ForEachSoundRow(rows, "history", m_findings, [&](const SoundRow& row) {
      row.Int64(0, "number", 1, kMaxChangeNumber);
      row.Text(1, "id");
      last = row.Int64(2, "first_change", last, most);
    });
  }

  void CheckReferences() {
    Query shares(m_database, "SELECT DISTINCT view_id FROM shares WHERE view_id NOT IN (SELECT id FROM views)");
    while (shares.Next()) m_findings.Add("view " + std::to_string(shares.Int64(0)) + " is shared and not there");
    Query documents(m_database,
                    "SELECT id FROM documents WHERE id NOT IN (SELECT document_id FROM views) "
                    "AND id NOT IN (SELECT document_id FROM changes)");
    while (documents.Next()) m_findings.Add("document " + std::to_string(documents.Int64(0)) + " belongs to nothing");
  }

  void CheckIds() {
    for (const std::string table : {"users", "groups", "views"}) {
      if (NextId(m_database, table) == 0) m_findings.Add(table + ": all ids have been given");
      CheckLast(table, "SELECT coalesce(max(id), 0) FROM " + table);
    }
    CheckLast("changes",
              "SELECT max(coalesce((SELECT max(number) FROM changes), 0), coalesce((SELECT max(change_number) FROM "
              "groups), 0), coalesce((SELECT max(change_number) FROM views), 0))");
  }

  // By what it remembers the server gives no number twice.
  void CheckLast(const std::string& table, const std::string& greatest) {
    Query remembered(m_database, "SELECT max(seq) FROM sqlite_sequence WHERE name = ?", table);
    Query found(m_database, greatest.c_str());
    remembered.Next();
    found.Next();
    if (remembered.Int64(0) >= found.Int64(0)) return;
    m_findings.Add(table + ": number " + std::to_string(found.Int64(0)) + " is there, but the last one given was " +
                   std::to_string(remembered.Int64(0)));
  }

  Database& m_database;
  Findings& m_findings;
  Catalog m_catalog;
  int64_t m_changes = 0;
};

}  // namespace

size_t CheckStore(const std::string& data, std::ostream& out) {
  Database database(data, Database::Use::kReading);
  if (!database.IsCurrent()) throw std::runtime_error(data + " is of an earlier version: start a server with it first");
  Findings findings(std::numeric_limits<size_t>::max());
  database.Handle().exec("BEGIN");  // one moment of the store: a server may be writing
  const std::string content = Check(database, findings).Run();
  for (const std::string& line : findings.Lines()) out << line << '\n';
  out << content << ", " << findings.Count() << " things wrong\n";
  return findings.Count();
}

}  // namespace server
