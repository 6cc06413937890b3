// Which sanitizer this is built with.
#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORVEL_ASAN 1
#endif
#if __has_feature(thread_sanitizer)
#define QUORVEL_TSAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define QUORVEL_ASAN 1
#endif
#if defined(__SANITIZE_THREAD__)
#define QUORVEL_TSAN 1
#endif

namespace norvik::qel {

#if defined(QUORVEL_ASAN) || defined(QUORVEL_TSAN)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace norvik::qel
