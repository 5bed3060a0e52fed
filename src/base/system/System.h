// SPDX-License-Identifier: Apache-2.0
// What differs between operating systems: src/base/posix and src/base/windows have the code.
#pragma once

#include <cstdint>

namespace base {

// Another number in a child that fork() makes, where there is that.
int64_t ProcessId();

// The errno that says what the system's number of a socket's error does.
int ErrnoOfSocketError(int number);

}  // namespace base
