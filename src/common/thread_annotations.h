// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Names for clang's thread-safety analysis; nothing for other compilers. The analysis runs in the
// clang + libc++ build, whose std::mutex and std::lock_guard carry the attributes it needs. The
// names have a prefix because some platform headers define the bare ones.
#pragma once

#include <mutex>

#if defined(__clang__)
#define QUORVEL_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define QUORVEL_THREAD_ANNOTATION(x)
#endif

// The member is read and written with the lock held.
#define QEL_GUARDED_BY(lock) QUORVEL_THREAD_ANNOTATION(guarded_by(lock))
// The caller holds the lock.
#define QEL_REQUIRES(...) QUORVEL_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
// The function takes the lock itself: the caller must not hold it.
#define QEL_EXCLUDES(...) QUORVEL_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
// The function accesses members without the lock. Each use states its reason.
#define QEL_UNCHECKED QUORVEL_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace norvik::qel::audio {

// std::unique_lock, which a wait needs, is not annotated. This call tells the analysis that the
// lock is held from here on.
inline void AssertHeld(std::mutex& lock) QUORVEL_THREAD_ANNOTATION(assert_capability(lock)) {
  static_cast<void>(lock);
}

}  // namespace norvik::qel::audio
