// SPDX-License-Identifier: Apache-2.0
#include "host/StopSignal.h"

#include <atomic>
#include <csignal>

namespace host {
namespace {

std::atomic<bool> g_stopAsked{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler must not wait for a lock");

void OnSignal(int) {
  g_stopAsked = true;
}

}  // namespace

void WatchForStop() {
  std::signal(SIGINT, OnSignal);
  std::signal(SIGTERM, OnSignal);
}

bool StopAsked() {
  return g_stopAsked;
}

}  // namespace host
