// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Spans of time as people type them.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace norvik::qel::monitor {

// What ParseDuration() accepts, for error messages.
inline constexpr std::string_view kDurations = "one such as 500ms, 1.5s, 10m or 2h, 1ms to 8760h";

// A number with its unit, ms, s, m or h.
std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text);

}  // namespace norvik::qel::monitor
