// SPDX-License-Identifier: Apache-2.0
// RapidJSON 1.1 does not look at what malloc and realloc answer. Its memory grows in two places only: the pools that
// hold values, and the stacks of readers, writers and string buffers. Here both throw std::bad_alloc when there is
// none, and what was to grow stays as it was. The build includes this before anything else in every file, since each of
// them must see it before RapidJSON makes its own.
#pragma once

#include <rapidjson/allocators.h>
#include <rapidjson/internal/stack.h>

#include <cstdint>
#include <new>

static_assert(RAPIDJSON_MAJOR_VERSION == 1 && RAPIDJSON_MINOR_VERSION == 1, "another version may grow elsewhere");

template <>
inline bool rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>::AddChunk(size_t capacity) {
  constexpr size_t kHeader = RAPIDJSON_ALIGN(sizeof(ChunkHeader));
  if (!baseAllocator_) ownBaseAllocator_ = baseAllocator_ = new CrtAllocator;
  void* const memory = capacity <= SIZE_MAX - kHeader ? baseAllocator_->Malloc(kHeader + capacity) : nullptr;
  if (!memory) throw std::bad_alloc();
  chunkHead_ = new (memory) ChunkHeader{capacity, 0, chunkHead_};
  return true;
}

template <>
inline void rapidjson::internal::Stack<rapidjson::CrtAllocator>::Resize(size_t capacity) {
  const size_t size = GetSize();
  void* const memory = allocator_->Realloc(stack_, GetCapacity(), capacity);
  if (!memory && capacity != 0) throw std::bad_alloc();
  stack_ = static_cast<char*>(memory);
  stackTop_ = stack_ + size;
  stackEnd_ = stack_ + capacity;
}
