// SPDX-License-Identifier: Apache-2.0
#include "base/system/StopSignal.h"

#include <semaphore.h>

#include <atomic>
#include <csignal>

namespace base {

namespace {

std::atomic<bool> g_stopAsked{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler must not wait for a lock");
sem_t g_stops;  // what a signal handler may post, and a thread wait for

void OnSignal(int) {
  g_stopAsked = true;
  sem_post(&g_stops);
}

void Nothing(int) {}

}  // namespace

void WatchForStop() {
  sem_init(&g_stops, 0, 0);
  std::signal(SIGINT, OnSignal);
  std::signal(SIGTERM, OnSignal);
}

bool StopAsked() {
  return g_stopAsked;
}

void AwaitStop() {
  while (!StopAsked()) sem_wait(&g_stops);
}

// Not SIG_IGN, which a program that is started would inherit.
WithoutInterrupt::WithoutInterrupt() : m_before(std::signal(SIGINT, Nothing)) {}

WithoutInterrupt::~WithoutInterrupt() {
  std::signal(SIGINT, m_before);
}

void IgnoreBrokenPipes() {
  std::signal(SIGPIPE, SIG_IGN);
}

void IgnoreBrokenPipesInThread() {
  sigset_t brokenPipe;
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
}

}  // namespace base
