// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a test may expect of the place where it runs.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUORVEL_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUORVEL_SANITIZED 1
#endif

namespace norvik::qel {

#if defined(QUORVEL_SANITIZED)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

#if defined(QUORVEL_EMULATED)
inline constexpr bool kEmulated = true;
#else
inline constexpr bool kEmulated = false;
#endif

}  // namespace norvik::qel
