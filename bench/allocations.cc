// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Interposes the C library's allocator in the whole process, shared libraries included.
#include "benchmarks.h"

#include <stddef.h>

#include <atomic>

namespace norvik::qel::bench {

namespace {

constinit std::atomic<int64_t> count = 0;

void Count() {
  count.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

int64_t AllocationCount() {
  return count.load(std::memory_order_relaxed);
}

}  // namespace norvik::qel::bench

extern "C" {

// glibc's own functions, under the names that it keeps for interposers.
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size) {
  norvik::qel::bench::Count();
  return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
  norvik::qel::bench::Count();
  return __libc_calloc(count, size);
}

void* realloc(void* old, size_t size) {
  norvik::qel::bench::Count();
  return __libc_realloc(old, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
  norvik::qel::bench::Count();
  return __libc_memalign(alignment, size);
}

}  // extern "C"
