// SPDX-License-Identifier: Apache-2.0
// Copies of whole stores.
#pragma once

#include <string>

namespace server {

// Copies the store as it is at one moment, whoever uses it meanwhile, to a new file that its owner alone may read. It
// is on the disk then. Throws std::runtime_error with one plain line; a file that was begun stays.
void CopyStore(const std::string& from, const std::string& to);

// Puts on the disk which files there are beside that one.
void SyncFolderOf(const std::string& file);

}  // namespace server
