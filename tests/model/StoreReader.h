// SPDX-License-Identifier: Apache-2.0
// What stands in a server's store, read beside the server: its tables and the changes it recorded.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>
#include <rapidjson/document.h>

#include <sstream>
#include <stdexcept>

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
  int MethodFor(Id user) const {
    const auto isIn = [user](const std::set<Id>& audience) {
      return audience.count(kPublic) + audience.count(user) > 0;
    };
    if (!isIn(after)) return isIn(before) ? 2 : -1;
    if (!isIn(before)) return 0;
    return contentChanged ? 1 : -1;
  }
};

// A view as that user sees it.
inline ViewRecord SeenBy(Id user, ViewRecord view) {
  view.shared = view.owner != kPublic && view.owner != user;
  if (view.shared) view.group = kNone;  // the owner's folder is not theirs to see
  return view;
}

class StoreReader {
 public:
  explicit StoreReader(const std::string& file) : m_database(file, SQLite::OPEN_READWRITE, 10000) {}

  std::vector<Row> ChangesAfter(Id number) {
    SQLite::Statement query(
        m_database,
        "SELECT number, kind, object_id, session_id, content_changed, before, after, head, d.text "
        "FROM changes LEFT JOIN documents d ON d.id = document_id WHERE number > ? ORDER BY number");
    query.bind(1, number);
    std::vector<Row> rows;
    while (query.executeStep()) {
      Row& row = rows.emplace_back();
      row.number = query.getColumn(0).getInt64();
      row.isView = query.getColumn(1).getInt() == 2;
      row.object = query.getColumn(2).getInt64();
      row.session = query.getColumn(3).getInt64();
      row.contentChanged = query.getColumn(4).getInt() != 0;
      row.before = ReadAudience(query.getColumn(5).getString());
      row.after = ReadAudience(query.getColumn(6).getString());
      if (!row.Deleted()) ReadHead(query.getColumn(7).getString(), query.getColumn(8).getString(), row);
    }
    return rows;
  }
  Id LastChange() { return Number("SELECT coalesce(max(number), 0) FROM changes"); }
  Truth Tables() {
    Truth truth;
    SQLite::Statement groups(m_database, "SELECT id, parent_id, user_id, name FROM groups");
    while (groups.executeStep()) {
      const Id id = groups.getColumn(0).getInt64();
      truth.groups[id] = {id, groups.getColumn(1).getInt64(), groups.getColumn(2).getInt64(),
                          groups.getColumn(3).getString()};
    }
    SQLite::Statement views(m_database,
                            "SELECT v.id, group_id, user_id, name, cycle_time, d.text FROM views v "
                            "JOIN documents d ON d.id = document_id");
    while (views.executeStep()) {
      const Id id = views.getColumn(0).getInt64();
      truth.views[id] = {id,
                         views.getColumn(1).getInt64(),
                         views.getColumn(2).getInt64(),
                         views.getColumn(3).getString(),
                         views.getColumn(4).getInt(),
                         CountWindows(views.getColumn(5).getString())};
    }
    SQLite::Statement shares(m_database, "SELECT view_id, user_id FROM shares");
    while (shares.executeStep()) {
      truth.sharedWith[shares.getColumn(0).getInt64()].insert(shares.getColumn(1).getInt64());
    }
    return truth;
  }
  Id NewestSession(Id user) { return Number("SELECT max(id) FROM sessions WHERE user_id = " + std::to_string(user)); }
  std::string IntegrityCheck() { return m_database.execAndGet("PRAGMA integrity_check").getString(); }  // "ok"

 private:
  Id Number(const std::string& sql) { return m_database.execAndGet(sql).getInt64(); }

  static std::set<Id> ReadAudience(const std::string& text) {
    if (text == "*") return {kPublic};
    std::set<Id> users;
    std::stringstream stream(text);
    for (std::string id; std::getline(stream, id, ',');) users.insert(std::stoll(id));
    return users;
  }
  // What the store keeps of an object is its element in two pieces, each without a brace.
  static rapidjson::Document Parse(const std::string& text) {
    rapidjson::Document json;
    json.Parse(text.c_str());
    if (json.HasParseError()) throw std::runtime_error("no JSON in the store: " + text);
    return json;
  }
  static size_t CountWindows(const std::string& document) {
    const rapidjson::Document json = Parse("{" + document.substr(document.empty() ? 0 : 1) + "}");
    if (!json.HasMember("PlanPages") || json["PlanPages"].Empty()) return 0;
    const auto& page = json["PlanPages"][0];
    return page.HasMember("PlanViewItem") ? page["PlanViewItem"].Size() : 0;
  }
  static void ReadHead(const std::string& head, const std::string& document, Row& row) {
    const rapidjson::Document json = Parse(head + "}");
    if (row.isView) {
      row.view = {json["ID"].GetInt(),      json["ViewGroupID"].GetInt(), json["UserID"].GetInt(),
                  json["Name"].GetString(), json["CycleTime"].GetInt(),   CountWindows(document)};
    } else {
      row.group = {json["ID"].GetInt(), json["ParentViewGroupID"].GetInt(), json["UserID"].GetInt(),
                   json["Name"].GetString()};
    }
  }

  SQLite::Database m_database;
};
