// SPDX-License-Identifier: Apache-2.0
#include "FailingMemory.h"

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <utility>

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
  const unsigned number = Number();
  if (!isArmed || t_isSpared || number < victims.first || number > victims.last) return true;
  const long moment = left--;
  if (moment > 0 || -moment >= toFail) return true;
  ++failed;
  errno = ENOMEM;
  return false;
}

// What dlsym itself asks for while one of the functions below is looked up; never given back.
alignas(std::max_align_t) char earlyMemory[4096];
size_t earlyUsed = 0;
thread_local bool t_isLookingUp = false;

void* EarlyMemory(size_t size) {
  constexpr size_t kUnit = alignof(std::max_align_t);
  size = (size + kUnit - 1) / kUnit * kUnit;
  if (size > sizeof earlyMemory - earlyUsed) std::abort();
  return earlyMemory + std::exchange(earlyUsed, earlyUsed + size);
}

bool IsEarly(const void* memory) {
  return memory >= earlyMemory && memory < earlyMemory + sizeof earlyMemory;
}

// The C library's own function, or that of a sanitizer.
template <class Function>
Function* LookUp(const char* name) {
  t_isLookingUp = true;
  auto* const next = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
  t_isLookingUp = false;
  return next;
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

// The whole program's.
extern "C" {

void* malloc(size_t size) {
  if (failing_memory::t_isLookingUp) return failing_memory::EarlyMemory(size);
  static const auto next = failing_memory::LookUp<void*(size_t)>("malloc");
  return failing_memory::MayAllocate() ? next(size) : nullptr;
}
void* calloc(size_t count, size_t size) {
  if (failing_memory::t_isLookingUp) return failing_memory::EarlyMemory(count * size);  // zero from the start
  static const auto next = failing_memory::LookUp<void*(size_t, size_t)>("calloc");
  return failing_memory::MayAllocate() ? next(count, size) : nullptr;
}
void* realloc(void* memory, size_t size) {
  static const auto next = failing_memory::LookUp<void*(void*, size_t)>("realloc");
  return failing_memory::MayAllocate() ? next(memory, size) : nullptr;
}
void free(void* memory) {
  static const auto next = failing_memory::LookUp<void(void*)>("free");
  if (!failing_memory::IsEarly(memory)) next(memory);
}
void* aligned_alloc(size_t alignment, size_t size) {
  static const auto next = failing_memory::LookUp<void*(size_t, size_t)>("aligned_alloc");
  return failing_memory::MayAllocate() ? next(alignment, size) : nullptr;
}
int posix_memalign(void** memory, size_t alignment, size_t size) {
  static const auto next = failing_memory::LookUp<int(void**, size_t, size_t)>("posix_memalign");
  return failing_memory::MayAllocate() ? next(memory, alignment, size) : ENOMEM;
}

}  // extern "C"
