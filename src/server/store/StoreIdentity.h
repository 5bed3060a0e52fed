// SPDX-License-Identifier: Apache-2.0
// Whether a SQLite file is a store of this server, and under which name it stands.
#pragma once

#include <SQLiteCpp/Database.h>

#include <string>

namespace server {

constexpr int kApplicationId = 0x51565331;  // in the header of the stores that are made here

// The version of the store; 0 where nothing is in it yet. Throws std::runtime_error with one plain line where it is the
// file of another application, and SQLite::Exception where it cannot be read. It changes nothing.
int VersionOfStore(SQLite::Database& database, const std::string& file);

// The file that a name leads to by symbolic links, itself there or not: what stands beside a store is named after it.
std::string StoreFile(const std::string& name);

bool IsStoreThere(const std::string& file);  // and not empty
// Throws std::runtime_error with one plain line where it is not there.
void NeedStore(const std::string& file);

// A name that nothing has: the wanted one, or with "-2", "-3" and so on behind it.
std::string FreeName(const std::string& wanted);

}  // namespace server
