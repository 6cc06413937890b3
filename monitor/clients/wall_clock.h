// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Wall-clock times as text, to the millisecond.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace norvik::qel::monitor {

using WallTime = std::chrono::system_clock::time_point;

std::string TimeOfDay(WallTime time);  // local: "12:00:03.120"
std::string DateOf(WallTime time);     // local: "2024-05-01"
std::string LocalTime(WallTime time);  // "2024-05-01 12:00:03.120"
std::string Iso8601(WallTime time);    // UTC: "2024-05-01T10:00:03.120Z"
// Parses that format; the fraction is optional. nullopt for any other text.
std::optional<WallTime> ParseIso8601(const std::string& text);

}  // namespace norvik::qel::monitor
