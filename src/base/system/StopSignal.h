// SPDX-License-Identifier: Apache-2.0
// Ctrl-C and other requests to a process to end.
#pragma once

namespace base {

// From now on Ctrl-C and a request to terminate do no more than StopAsked and AwaitStop tell. On Windows these are all
// events of a console: the break key, its closing, and the end of the session, after which Windows waits some seconds.
void WatchForStop();
bool StopAsked();
// Returns once a stop is asked for. REQUIRES: WatchForStop was called; one thread at a time.
void AwaitStop();

// As long as it lives, Ctrl-C does nothing to this process, and to those it starts what it does to any.
class WithoutInterrupt {
 public:
  WithoutInterrupt();
  ~WithoutInterrupt();
  WithoutInterrupt(const WithoutInterrupt&) = delete;
  WithoutInterrupt& operator=(const WithoutInterrupt&) = delete;

 private:
  [[maybe_unused]] void (*m_before)(int) = nullptr;  // nothing on Windows
};

// Writing to a pipe that nobody reads fails instead of ending the process: in all threads, or in the calling one.
void IgnoreBrokenPipes();
void IgnoreBrokenPipesInThread();

}  // namespace base
