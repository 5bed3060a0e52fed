// SPDX-License-Identifier: Apache-2.0
// What `viewserver` does for an operator beside serving. `data` is the store. Each throws std::runtime_error with one
// plain line where it cannot; nothing has been changed then.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "server/changes/ChangeLog.h"

namespace server {

// Users, beside a running server or without one. AddUser makes a store where there is none, the others need one.
void AddUser(const std::string& data, const std::string& name, const std::string& password);
void SetPassword(const std::string& data, const std::string& name, const std::string& password);
void RenameUser(const std::string& data, const std::string& name, const std::string& newName);
void DeleteUser(const std::string& data, const std::string& name);
void ListUsers(const std::string& data, std::ostream& out);  // id, tab, name

// Reads all that is in the store, beside a running server or without one, and says what is wrong, a line each, then a
// line of what there is. Answers how much is wrong.
size_t CheckStore(const std::string& data, std::ostream& out);

// Writes a copy of the store, beside a running server or without one, to a file that must not be there yet.
void BackUp(const std::string& data, const std::string& file);
// Puts a copy in the place of the store; no server may run. Answers where what it replaces stands now; empty where
// there was nothing. A copy that is damaged is refused.
std::string Restore(const std::string& data, const std::string& file);

// Applies a seed as a starting server does; none may run.
void ApplySeed(const std::string& data, const std::string& file, const LogLimits& limits);

}  // namespace server
