// SPDX-License-Identifier: Apache-2.0
#include "base/system/StopSignal.h"

#include <windows.h>

namespace base {

namespace {

HANDLE g_stop = nullptr;  // an event, set once a stop is asked for

// Windows calls it in a thread of its own, and ends the process as soon as that returns from an event of the latter
// kind.
BOOL WINAPI OnConsoleEvent(DWORD event) {
  SetEvent(g_stop);
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

BOOL WINAPI IgnoreInterrupt(DWORD event) {
  return event == CTRL_C_EVENT;
}

}  // namespace

void WatchForStop() {
  if (g_stop == nullptr) g_stop = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

bool StopAsked() {
  return g_stop != nullptr && WaitForSingleObject(g_stop, 0) == WAIT_OBJECT_0;
}

void AwaitStop() {
  WaitForSingleObject(g_stop, INFINITE);
}

WithoutInterrupt::WithoutInterrupt() {
  SetConsoleCtrlHandler(IgnoreInterrupt, TRUE);
}

WithoutInterrupt::~WithoutInterrupt() {
  SetConsoleCtrlHandler(IgnoreInterrupt, FALSE);
}

void IgnoreBrokenPipes() {}

void IgnoreBrokenPipesInThread() {}

}  // namespace base
