// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/wall_clock.h"

#include <stdio.h>
#include <time.h>

#include <string_view>

namespace norvik::qel::monitor {

namespace {

struct Instant {
  time_t seconds;
  int milliseconds;
};

Instant Split(WallTime time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const auto rest = std::chrono::floor<std::chrono::milliseconds>(time - seconds);
  return {.seconds = std::chrono::system_clock::to_time_t(seconds),
          .milliseconds = static_cast<int>(rest.count())};
}

tm Local(const Instant& instant) {
  tm local = {};
  localtime_r(&instant.seconds, &local);
  return local;
}

}  // namespace

// Numbers only: strftime() with names of days or months would follow the locale.
std::string LocalTime(WallTime time) {
  const Instant instant = Split(time);
  const tm local = Local(instant);
  char text[96];
  snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", local.tm_year + 1900,
           local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
           instant.milliseconds);
  return text;
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
  const Instant instant = Split(time);
  tm utc = {};
  gmtime_r(&instant.seconds, &utc);
  char text[96];
  snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.tm_year + 1900,
           utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, instant.milliseconds);
  return text;
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
