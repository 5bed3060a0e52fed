// SPDX-License-Identifier: Apache-2.0
// What stands in a server's store, read beside the server: its tables and the changes it recorded.
#pragma once

#include <SQLiteCpp/Database.h>

#include <string>
#include <vector>

#include "CacheModel.h"

// One recorded change.
struct Row {
  Id number = 0;
  bool isView = false;
  Id object = kNone;
  Id session = 0;  // whose own edit it is; 0: nobody's
  bool contentChanged = true;
  std::set<Id> before, after;  // who sees it; kPublic: everybody
  GroupRecord group;           // after the change, of the kind that it is
  ViewRecord view;

  bool Deleted() const { return after.empty(); }
  // What that user hears: 0 added, 1 modified, 2 removed; -1 nothing.
  int MethodFor(Id user) const;
};

// A view as that user sees it.
ViewRecord SeenBy(Id user, ViewRecord view);

class StoreReader {
 public:
  explicit StoreReader(const std::string& file) : m_database(file, SQLite::OPEN_READWRITE, 10000) {}

  std::vector<Row> ChangesAfter(Id number);
  Id LastChange();
  Truth Tables();
  Id NewestSession(Id user);
  std::string IntegrityCheck();  // "ok"

 private:
  Id Number(const std::string& sql) { return m_database.execAndGet(sql).getInt64(); }

  SQLite::Database m_database;
};
