// SPDX-License-Identifier: Apache-2.0
#include "StoreReader.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <rapidjson/document.h>

#include <sstream>
#include <stdexcept>

namespace {

std::set<Id> ReadAudience(const std::string& text) {
  if (text == "*") return {kPublic};
  std::set<Id> users;
  std::stringstream stream(text);
  for (std::string id; std::getline(stream, id, ',');) users.insert(std::stoll(id));
  return users;
}

bool Sees(const std::set<Id>& audience, Id user) {
  return audience.count(kPublic) > 0 || audience.count(user) > 0;
}

size_t CountWindows(const std::string& document) {
  rapidjson::Document json;
  json.Parse(("{" + document.substr(document.empty() ? 0 : 1) + "}").c_str());
  if (json.HasParseError()) throw std::runtime_error("a document in the store is no JSON: " + document);
  if (!json.HasMember("PlanPages") || json["PlanPages"].Empty()) return 0;
  const auto& page = json["PlanPages"][0];
  return page.HasMember("PlanViewItem") ? page["PlanViewItem"].Size() : 0;
}

// The record's head is its element without the closing brace.
void ReadHead(const std::string& head, const std::string& document, Row& row) {
  rapidjson::Document json;
  json.Parse((head + "}").c_str());
  if (json.HasParseError()) throw std::runtime_error("a head in the store is no JSON: " + head);
  if (row.isView) {
    row.view = {json["ID"].GetInt(),      json["ViewGroupID"].GetInt(), json["UserID"].GetInt(),
                json["Name"].GetString(), json["CycleTime"].GetInt(),   CountWindows(document)};
  } else {
    row.group = {json["ID"].GetInt(), json["ParentViewGroupID"].GetInt(), json["UserID"].GetInt(),
                 json["Name"].GetString()};
  }
}

}  // namespace

int Row::MethodFor(Id user) const {
  const bool saw = Sees(before, user);
  const bool sees = Sees(after, user);
  if (!sees) return saw ? 2 : -1;
  if (!saw) return 0;
  return contentChanged ? 1 : -1;
}

ViewRecord SeenBy(Id user, ViewRecord view) {
  view.shared = view.owner != kPublic && view.owner != user;
  if (view.shared) view.group = kNone;  // the owner's folder is not theirs to see
  return view;
}

std::vector<Row> StoreReader::ChangesAfter(Id number) {
  SQLite::Statement query(m_database,
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

Id StoreReader::LastChange() {
  return Number("SELECT coalesce(max(number), 0) FROM changes");
}

Truth StoreReader::Tables() {
  Truth truth;
  SQLite::Statement groups(m_database, "SELECT id, parent_id, user_id, name FROM groups");
  while (groups.executeStep()) {
    const GroupRecord group{groups.getColumn(0).getInt64(), groups.getColumn(1).getInt64(),
                            groups.getColumn(2).getInt64(), groups.getColumn(3).getString()};
    truth.groups[group.id] = group;
  }
  SQLite::Statement views(m_database,
                          "SELECT v.id, group_id, user_id, name, cycle_time, d.text FROM views v "
                          "JOIN documents d ON d.id = document_id");
  while (views.executeStep()) {
    const ViewRecord view{views.getColumn(0).getInt64(), views.getColumn(1).getInt64(),
                          views.getColumn(2).getInt64(), views.getColumn(3).getString(),
                          views.getColumn(4).getInt(),   CountWindows(views.getColumn(5).getString())};
    truth.views[view.id] = view;
  }
  SQLite::Statement shares(m_database, "SELECT view_id, user_id FROM shares");
  while (shares.executeStep()) truth.sharedWith[shares.getColumn(0).getInt64()].insert(shares.getColumn(1).getInt64());
  return truth;
}

Id StoreReader::NewestSession(Id user) {
  return Number("SELECT max(id) FROM sessions WHERE user_id = " + std::to_string(user));
}

std::string StoreReader::IntegrityCheck() {
  return m_database.execAndGet("PRAGMA integrity_check").getString();
}
