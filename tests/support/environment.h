// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a test may expect of the place where it runs.
#pragma once

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
