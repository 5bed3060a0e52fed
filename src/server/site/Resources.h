// SPDX-License-Identifier: Apache-2.0
// What views refer to and users choose: elements, areas and default views. Not thread-safe: its owner locks.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "server/documents/Requests.h"
#include "server/store/Database.h"

namespace server {

struct Element {
  int32_t id = 0;
  int32_t type = 0;
  std::string name;
  int32_t siteId = -1;
};

struct ElementFilter {
  std::optional<int32_t> type;
  std::optional<std::vector<int32_t>> ids;
};

class Resources {
 public:
  explicit Resources(Database& database) : m_database(database) {}

  std::string ElementsData(const ElementFilter& filter);  // `{"ElementList":{"Element":[...]}}`, by id
  std::string AreasData();                                // `{"AreaList":{"Area":[...]}}`, by id
  void PutElement(const Element& element);
  void PutArea(int32_t id, const std::string& name);

  DefaultView GetDefaultView(int32_t userId);  // -1 and -1 where none was set
  void SetDefaultView(int32_t userId, const DefaultView& view);

 private:
  Database& m_database;
};

}  // namespace server
