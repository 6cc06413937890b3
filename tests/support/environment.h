// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Properties of the environment that a test runs in.
#pragma once

namespace norvik::qel {

inline constexpr bool kSanitized = QUORVEL_SANITIZED;
inline constexpr bool kEmulated = QUORVEL_EMULATED;

}  // namespace norvik::qel
