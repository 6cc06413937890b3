// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Names for clang's thread-safety analysis, for host code and for tests. They mean something in a
// build with libc++'s annotations only: the mutexes of other C++ libraries cannot be analysed.
#pragma once

#include <mutex>

#if defined(__clang__) && defined(_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
#define QUORVEL_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define QUORVEL_THREAD_ATTRIBUTE(x)
#endif

// The member, or what it points to, is read and written with the lock held.
#define QUORVEL_GUARDED_BY(lock) QUORVEL_THREAD_ATTRIBUTE(guarded_by(lock))
#define QUORVEL_PT_GUARDED_BY(lock) QUORVEL_THREAD_ATTRIBUTE(pt_guarded_by(lock))
// The caller holds the lock. A predicate of a wait is such a function, too.
#define QUORVEL_REQUIRES(...) QUORVEL_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
// The function takes the lock itself: the caller must not hold it.
#define QUORVEL_EXCLUDES(...) QUORVEL_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

namespace norvik::qel::fake {

// One call tells the analysis that the lock is held from here on, where it cannot see that:
// std::unique_lock, which a wait needs, is not annotated.
inline void AssertHeld(const std::mutex& lock) QUORVEL_THREAD_ATTRIBUTE(assert_capability(lock)) {
  static_cast<void>(lock);
}

}  // namespace norvik::qel::fake
