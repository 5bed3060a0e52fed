// SPDX-License-Identifier: Apache-2.0
// What a process is given. Texts are UTF-8 on Windows, and elsewhere the bytes that were given.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace base {

// Those of main, the program's name first. They last as long as the process.
std::vector<const char*> Arguments(int count, char** arguments);
// Nothing where the variable is not set.
std::optional<std::string> Environment(const char* name);

// Lets the process have as many files and sockets open as it may, and says how many; nothing where nobody counts them.
std::optional<std::uint64_t> RaiseOpenFiles();

}  // namespace base
