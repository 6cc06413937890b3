// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/duration.h"

#include <algorithm>
#include <cmath>

#include "cli/decimal.h"

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
  constexpr double kLongest = 8760.0 * 60 * 60 * 1000;
  const size_t size = std::min(text.find_first_not_of("0123456789."), text.size());
  const std::optional<double> number = ParseDecimal(text.substr(0, size));
  const std::optional<milliseconds> unit = ParseUnit(text.substr(size));
  if (!number || !unit) return std::nullopt;
  const double count = *number * static_cast<double>(unit->count());
  if (count < 1 || count > kLongest) return std::nullopt;
  return milliseconds(std::llround(count));
}

}  // namespace norvik::qel::monitor
