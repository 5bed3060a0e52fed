// SPDX-License-Identifier: Apache-2.0
#include "server/site/Resources.h"

#include <algorithm>

#include "server/documents/Json.h"

namespace server {

std::string Resources::ElementsData(const ElementFilter& filter) {
  std::string list;
  const auto take = [&list, &filter](Query& row) {
    if (filter.type && row.Int(1) != *filter.type) return;
    if (wire::IsUtf8(row.String(2))) {
      wire::AppendObject(list,
                         {{"ID", row.Int(0)}, {"Type", row.Int(1)}, {"Name", row.String(2)}, {"SiteID", row.Int(3)}});
    }
  };
  if (filter.ids) {
    std::vector<int32_t> ids = *filter.ids;
    std::sort(ids.begin(), ids.end());
    for (int32_t id : ids) {
      Query row(m_database, "SELECT id, type, name, site_id FROM elements WHERE id = ?", id);
      if (row.Next()) take(row);
    }
  } else {
    Query rows(m_database,
               "SELECT id, type, name, site_id FROM elements WHERE id BETWEEN 1 AND 2147483647 ORDER BY id");
    while (rows.Next()) take(rows);
  }
  return R"({"ElementList":{"Element":[)" + list + "]}}";
}

std::string Resources::AreasData() {
  std::string list;
  Query rows(m_database, "SELECT id, name FROM areas WHERE id BETWEEN 1 AND 2147483647 ORDER BY id");
  while (rows.Next()) {
    const std::string name = rows.String(1);
    if (wire::IsUtf8(name)) wire::AppendObject(list, {{"ID", rows.Int(0)}, {"Name", name}});
  }
  return R"({"AreaList":{"Area":[)" + list + "]}}";
}

void Resources::PutElement(const Element& element) {
  Execute(m_database, "INSERT OR REPLACE INTO elements (id, type, name, site_id) VALUES (?,?,?,?)", element.id,
          element.type, element.name, element.siteId);
}

void Resources::PutArea(int32_t id, const std::string& name) {
  Execute(m_database, "INSERT OR REPLACE INTO areas (id, name) VALUES (?,?)", id, name);
}

DefaultView Resources::GetDefaultView(int32_t userId) {
  Query query(m_database, "SELECT type, view_id FROM default_views WHERE user_id = ?", userId);
  if (!query.Next()) return {};
  return {query.Int(0), query.Int(1)};
}

void Resources::SetDefaultView(int32_t userId, const DefaultView& view) {
  Execute(m_database, "INSERT OR REPLACE INTO default_views (user_id, type, view_id) VALUES (?,?,?)", userId, view.type,
          view.id);
}

}  // namespace server
