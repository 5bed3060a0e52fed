// SPDX-License-Identifier: Apache-2.0
// Stores that an earlier server has written. The constructor of Database decides when this is asked for.
#pragma once

#include <SQLiteCpp/Database.h>

#include <string>

namespace server {

// Makes a store of version 1 or 2 one of version 3, in one transaction. Answers the version that it has then, another
// one where another process was here first. The store as it was stays beside it as `file` + ".v1" or ".v2", with "-2",
// "-3" and so on behind it where that name is taken; a line on stderr says so. Throws SQLite::Exception, or
// std::runtime_error with one plain line; nothing has been changed then, and no copy is left.
int UpgradeStore(SQLite::Database& database, const std::string& file);

}  // namespace server
