// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

namespace testing_support {

#ifdef _WIN32
// Windows has no fork(): tests that need one are left out there.
inline std::string SaidByForkedChild(const std::function<std::string()>&) {
  return {};
}
#else
#ifdef __SANITIZE_ADDRESS__
// AddressSanitizer's allocator, unlike the C library's, is not made ready for fork(): what another thread has locked
// there stays locked in the child. The search for leaks at exit locks all of it, so a child goes without; and a thread
// that has just answered gets the time to become idle.
inline bool g_isForkedChild = false;
extern "C" __attribute__((used, visibility("default"))) inline int __lsan_is_turned_off() {  // NOLINT
  return g_isForkedChild;
}
inline void PrepareFork() {
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
}
inline void NoteForkedChild() {
  g_isForkedChild = true;
}
#else
inline void PrepareFork() {}
inline void NoteForkedChild() {}
#endif

// What `say` answers in a child by fork that then ends by exit(); "(killed)" behind it where the child did not end
// within 20 s or ended badly.
inline std::string SaidByForkedChild(const std::function<std::string()>& say) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  std::fflush(nullptr);
  PrepareFork();
  const pid_t child = fork();
  if (child == 0) {
    NoteForkedChild();
    alarm(20);
    const std::string text = say();
    const bool written = write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(ends[1]);
    std::exit(written ? 0 : 1);
  }
  close(ends[1]);
  std::string said;
  char bytes[256];
  for (ssize_t got = 0; (got = read(ends[0], bytes, sizeof bytes)) > 0;) said.append(bytes, static_cast<size_t>(got));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? said : said + "(killed)";
}
#endif

}  // namespace testing_support
