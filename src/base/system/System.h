// SPDX-License-Identifier: Apache-2.0
// What differs between operating systems: src/base/posix and src/base/windows have the code.
#pragma once

#include <cstdint>

namespace base {

// Another number in a child that fork() makes, where there is that.
int64_t ProcessId();

// Whether the threads that the process with that number had started are gone, with all they held: in a child that
// fork() makes of it, and on Windows once it ends and unloads its libraries.
bool HasLostThreadsOf(int64_t process);

// The errno that says what the system's number of a socket's error does.
int ErrnoOfSocketError(int number);

}  // namespace base
