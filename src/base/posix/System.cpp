// SPDX-License-Identifier: Apache-2.0
#include "base/system/System.h"

#include <unistd.h>

namespace base {

int64_t ProcessId() {
  return getpid();
}

bool HasLostThreadsOf(int64_t process) {
  return process != getpid();
}

int ErrnoOfSocketError(int number) {
  return number;
}

}  // namespace base
