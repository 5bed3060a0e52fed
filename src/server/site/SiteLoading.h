// SPDX-License-Identifier: Apache-2.0
// A store's groups and views, read so that no damage in one of them reaches a list. What is damaged is left out and
// stays in the store as it is; what lies where nothing can lie is shown at the top level. Operations throw
// SQLite::Exception where the file itself cannot be read.
#pragma once

#include "server/model/Catalog.h"
#include "server/store/Database.h"
#include "server/store/Findings.h"

namespace server {

void LoadSite(Database& database, Catalog& catalog, Findings& findings);

// What LoadSite does not read: users, areas and elements, which lists leave out by themselves where they are damaged.
void CheckNames(Database& database, Findings& findings);

}  // namespace server
