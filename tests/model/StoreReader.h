// SPDX-License-Identifier: Apache-2.0
// What stands in a server's store, read beside the server: its tables and the changes it recorded.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>

#include "CacheModel.h"

// One recorded change.
struct Row {
  GroupRecord group;  // after the change, of the kind that it is; of a removed object the id alone
  ViewRecord view;
  Id number = 0;
  bool isView = false;
  Id session = 0;  // whose own edit it is; 0: nobody's
  bool contentChanged = true;
  std::string before, after;  // who sees it: "*" for everybody, else ids with commas between them

  Id Object() const { return view.id; }
  bool Deleted() const { return after.empty(); }
  // What that user hears: 0 added, 1 modified, 2 removed; -1 nothing.
  int MethodFor(Id user) const {
    const auto isIn = [user](const std::string& audience) {
      return audience == "*" || ("," + audience + ",").find("," + std::to_string(user) + ",") != std::string::npos;
    };
    if (!isIn(after)) return isIn(before) ? 2 : -1;
    if (!isIn(before)) return 0;
    return contentChanged ? 1 : -1;
  }
  void FoldInto(Truth& truth) const {
    const auto fold = [this](auto& table, const auto& record) {
      table.erase(Object());
      if (!Deleted()) table[Object()] = record;
    };
    isView ? fold(truth.views, view) : fold(truth.groups, group);
  }
  void Tell(Id user, CacheModel& model) const {
    const int method = MethodFor(user);
    if (method == 2) {
      isView ? model.ViewRemoved(Object()) : model.GroupRemoved(Object());
    } else if (method >= 0 && isView) {
      method == 0 ? model.ViewAdded(SeenBy(user, view)) : model.ViewModified(SeenBy(user, view));
    } else if (method >= 0) {
      method == 0 ? model.GroupAdded(group) : model.GroupModified(group);
    }
  }
};

class StoreReader {
 public:
  explicit StoreReader(const std::string& file) : m_database(file, SQLite::OPEN_READWRITE, 10000) {}

  std::vector<Row> ChangesAfter(Id number) {
    // What the store keeps of an object is its element in two pieces, each without a brace.
    SQLite::Statement query(m_database,
                            "WITH c AS (SELECT *, iif(after = '', '{', head) || '}' AS json FROM changes) "
                            "SELECT object_id, coalesce(json->>'ViewGroupID', json->>'ParentViewGroupID'), "
                            "json->>'UserID', json->>'Name', json->>'CycleTime', " +
                                kWindows +
                                ", number, kind = 2, session_id, content_changed, before, after "
                                "FROM c LEFT JOIN documents d ON d.id = document_id WHERE number > ? ORDER BY number");
    query.bind(1, number);
    std::vector<Row> rows;
    while (query.executeStep()) {
      rows.push_back({query.getColumns<GroupRecord, 4>(), query.getColumns<ViewRecord, 6>(),
                      query.getColumn(6).getInt64(), query.getColumn(7).getInt() != 0, query.getColumn(8).getInt64(),
                      query.getColumn(9).getInt() != 0, query.getColumn(10), query.getColumn(11)});
    }
    return rows;
  }
  Id LastChange() { return Number("SELECT coalesce(max(number), 0) FROM changes"); }
  Truth Tables() {
    Truth truth;
    SQLite::Statement groups(m_database, "SELECT id, parent_id, user_id, name FROM groups");
    while (groups.executeStep()) truth.groups[groups.getColumn(0)] = groups.getColumns<GroupRecord, 4>();
    SQLite::Statement views(m_database, "SELECT v.id, group_id, user_id, name, cycle_time, " + kWindows +
                                            " FROM views v JOIN documents d ON d.id = document_id");
    while (views.executeStep()) truth.views[views.getColumn(0)] = views.getColumns<ViewRecord, 6>();
    SQLite::Statement shares(m_database, "SELECT view_id, user_id FROM shares");
    while (shares.executeStep()) truth.sharedWith[shares.getColumn(0)].insert(shares.getColumn(1).getInt64());
    return truth;
  }
  Id NewestSession(Id user) { return Number("SELECT max(id) FROM sessions WHERE user_id = " + std::to_string(user)); }
  std::string IntegrityCheck() { return m_database.execAndGet("PRAGMA integrity_check").getString(); }  // "ok"

 private:
  // Those on the first page of the document `d`.
  inline static const std::string kWindows =
      "coalesce(json_array_length('{' || substr(d.text, 2) || '}', '$.PlanPages[0].PlanViewItem'), 0)";

  Id Number(const std::string& sql) { return m_database.execAndGet(sql).getInt64(); }

  SQLite::Database m_database;
};
