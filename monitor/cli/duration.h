// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Spans of time as people type them.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace norvik::qel::monitor {

// A whole number above zero and its unit, ms, s, m or h: "500ms", "10s". Nothing for all else, or
// for more than a year.
std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text);

}  // namespace norvik::qel::monitor
