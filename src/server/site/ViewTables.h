// SPDX-License-Identifier: Apache-2.0
// Writes the rows of views and groups. Not thread-safe: its owner locks, and opens the transaction around what belongs
// together. Operations throw SQLite::Exception.
#pragma once

#include "server/model/Model.h"
#include "server/store/Database.h"

namespace server {

class ViewTables {
 public:
  explicit ViewTables(Database& database) : m_database(database) {}

  // Insert or replace; give an id where there is none yet (a view's document likewise) and fill the head. Throw a
  // Refusal where no id is left.
  // REQUIRES: the number of the change is set.
  void Save(Group& group);
  void Save(View& view);
  void DeleteGroup(int32_t id);
  void DeleteView(const View& view);

 private:
  void ForgetDocument(int64_t documentId);

  Database& m_database;
};

}  // namespace server
