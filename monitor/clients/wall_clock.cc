// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/wall_clock.h"

#include <stdio.h>
#include <time.h>

#include <string_view>

namespace norvik::qel::monitor {

namespace {

// Numbers only: strftime() with names of days or months would follow the locale.
std::string Text(WallTime time, tm* (*split)(const time_t*, tm*), char separator) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const auto rest = std::chrono::floor<std::chrono::milliseconds>(time - seconds);
  const time_t whole = std::chrono::system_clock::to_time_t(seconds);
  tm parts = {};
  split(&whole, &parts);
  char text[96];
  snprintf(text, sizeof text, "%04d-%02d-%02d%c%02d:%02d:%02d.%03d", parts.tm_year + 1900,
           parts.tm_mon + 1, parts.tm_mday, separator, parts.tm_hour, parts.tm_min, parts.tm_sec,
           static_cast<int>(rest.count()));
  return text;
}

}  // namespace

std::string LocalTime(WallTime time) {
  return Text(time, localtime_r, ' ');
}

std::string DateOf(WallTime time) {
  const std::string text = LocalTime(time);
  return text.substr(0, text.find(' '));
}

std::string TimeOfDay(WallTime time) {
  const std::string text = LocalTime(time);
  return text.substr(text.find(' ') + 1);
}

std::string Iso8601(WallTime time) {
  return Text(time, gmtime_r, 'T') + "Z";
}

std::optional<WallTime> ParseIso8601(const std::string& text) {
  tm utc = {};
  const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &utc);
  if (rest == nullptr) return std::nullopt;
  WallTime time = std::chrono::system_clock::from_time_t(timegm(&utc));
  if (*rest == '.') {
    WallTime::duration unit = std::chrono::milliseconds(100);
    for (++rest; *rest >= '0' && *rest <= '9'; ++rest, unit /= 10) time += unit * (*rest - '0');
  }
  return std::string_view(rest) == "Z" ? std::optional(time) : std::nullopt;
}

}  // namespace norvik::qel::monitor
