// SPDX-License-Identifier: Apache-2.0
#include "FailingMemory.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace failing_memory {
namespace {

std::atomic<unsigned> threadCount{0};
thread_local unsigned t_number = 0;
thread_local bool t_isSpared = false;

unsigned Number() {
  if (t_number == 0) t_number = ++threadCount;
  return t_number;
}

std::atomic<bool> isArmed{false};
// Written while nothing is armed.
Threads victims{0, 0};
long toFail = 0;
std::atomic<long> left{0};
std::atomic<long> failed{0};

bool MayAllocate() {
  if (!isArmed || t_isSpared || t_number < victims.first || t_number > victims.last) return true;
  const long moment = left--;
  if (moment > 0 || -moment >= toFail) return true;
  ++failed;
  errno = ENOMEM;
  return false;
}

}  // namespace

Threads ThisThread() {
  return {Number(), Number()};
}

Threads NewThreads() {
  return {threadCount + 1, UINT_MAX};
}

Threads ThreadsSince(const Threads& since) {
  return {since.first, threadCount};
}

void FailAt(long moment, Want want, const Threads& which) {
  victims = which;
  toFail = want == Want::OneAllocation ? 1 : want == Want::TwentyFromThere ? 20 : LONG_MAX;
  left = moment;
  failed = 0;
  isArmed = true;
}

Spared::Spared() {
  t_isSpared = true;
}
Spared::~Spared() {
  t_isSpared = false;
}

long Stop() {
  isArmed = false;
  return failed;
}

}  // namespace failing_memory

// The whole program's, before the C library's own, or before a sanitizer's.
extern "C" {

#ifdef QORVI_SANITIZED_MEMORY
#define QORVI_NEXT(name) __interceptor_##name
#else
#define QORVI_NEXT(name) __libc_##name
#endif
void* QORVI_NEXT(malloc)(size_t size);
void* QORVI_NEXT(calloc)(size_t count, size_t size);
void* QORVI_NEXT(realloc)(void* memory, size_t size);
void* QORVI_NEXT(memalign)(size_t alignment, size_t size);

void* malloc(size_t size) {
  return failing_memory::MayAllocate() ? QORVI_NEXT(malloc)(size) : nullptr;
}
void* calloc(size_t count, size_t size) {
  return failing_memory::MayAllocate() ? QORVI_NEXT(calloc)(count, size) : nullptr;
}
void* realloc(void* memory, size_t size) {
  return failing_memory::MayAllocate() ? QORVI_NEXT(realloc)(memory, size) : nullptr;
}
void* aligned_alloc(size_t alignment, size_t size) {
  return failing_memory::MayAllocate() ? QORVI_NEXT(memalign)(alignment, size) : nullptr;
}
int posix_memalign(void** memory, size_t alignment, size_t size) {
  void* const made = aligned_alloc(alignment, size);
  if (!made) return ENOMEM;
  *memory = made;
  return 0;
}

}  // extern "C"

// A sanitizer's own would not come by. The forms that these do not name end in them.
void* operator new(size_t size) {
  failing_memory::Number();
  void* const memory = malloc(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
void* operator new(size_t size, std::align_val_t alignment) {
  failing_memory::Number();
  void* const memory = aligned_alloc(static_cast<size_t>(alignment), size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  free(memory);
}
void operator delete(void* memory, size_t, std::align_val_t) noexcept {
  free(memory);
}
