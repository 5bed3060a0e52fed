// SPDX-License-Identifier: Apache-2.0
#include "base/system/System.h"

// clang-format off
#include <winsock2.h>
#include <windows.h>
#include <winternl.h>
// clang-format on

#include <cerrno>

extern "C" NTSYSAPI BOOLEAN NTAPI RtlDllShutdownInProgress();

namespace base {

int64_t ProcessId() {
  return GetCurrentProcessId();
}

bool HasLostThreadsOf(int64_t) {
  return RtlDllShutdownInProgress() != FALSE;
}

int ErrnoOfSocketError(int number) {
  switch (number) {
    case WSAECONNREFUSED:
      return ECONNREFUSED;
    case WSAETIMEDOUT:
      return ETIMEDOUT;
    case WSAENETUNREACH:
      return ENETUNREACH;
    case WSAEHOSTUNREACH:
      return EHOSTUNREACH;
    case WSAECONNRESET:
      return ECONNRESET;
    default:
      return number;
  }
}

}  // namespace base
