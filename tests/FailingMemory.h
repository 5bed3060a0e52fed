// SPDX-License-Identifier: Apache-2.0
// Memory that runs out: malloc, calloc, realloc and what aligns, and with them `operator new`, of the whole program and
// its shared libraries fail when a test says so. A program that links failing_memory has it.
#pragma once

namespace failing_memory {

enum class Want { OneAllocation, TwentyFromThere, AllFromThere };

// Threads by the order in which they first asked `operator new`. No allocation fails before that: a thread's beginning
// is the system's, or a sanitizer's.
struct Threads {
  unsigned first;
  unsigned last;
};
Threads ThisThread();
// Those that ask it for the first time from now on.
Threads NewThreads();
// Those that have asked it for the first time since `since` was NewThreads().
Threads ThreadsSince(const Threads& since);

// Allocation number `moment`, from 0, of these threads together fails, and those behind it as `want` says. Once at a
// time.
void FailAt(long moment, Want want, const Threads& victims = ThisThread());
// While one lives, its thread is no victim.
class Spared {
 public:
  Spared();
  ~Spared();
  Spared(const Spared&) = delete;
  Spared& operator=(const Spared&) = delete;
};

// Ends it. How many allocations failed.
long Stop();

}  // namespace failing_memory
