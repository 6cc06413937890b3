// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/duration.h"

#include <charconv>
#include <cstdint>
#include <system_error>

namespace norvik::qel::monitor {

namespace {

using std::chrono::milliseconds;

std::optional<milliseconds> ParseUnit(std::string_view unit) {
  if (unit == "ms") return milliseconds(1);
  if (unit == "s") return std::chrono::seconds(1);
  if (unit == "m") return std::chrono::minutes(1);
  if (unit == "h") return std::chrono::hours(1);
  return std::nullopt;
}

}  // namespace

std::optional<milliseconds> ParseDuration(std::string_view text) {
  constexpr milliseconds kLongest = std::chrono::hours(24 * 365);
  const char* const end = text.data() + text.size();
  uint64_t count = 0;
  const auto [number_end, error] = std::from_chars(text.data(), end, count);
  if (error != std::errc()) return std::nullopt;
  const auto unit = ParseUnit({number_end, static_cast<size_t>(end - number_end)});
  if (!unit) return std::nullopt;
  if (count == 0 || count > static_cast<uint64_t>(kLongest / *unit)) return std::nullopt;
  return *unit * static_cast<int64_t>(count);
}

}  // namespace norvik::qel::monitor
