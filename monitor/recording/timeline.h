// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A recording as curves over time, for plots.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recording/recording.h"

namespace norvik::qel::monitor {

struct Timeline {
  // kCharger is 1 while online. kService is 1 while the service runs and 0 while it is dead.
  enum class Quantity {
    kLevel,
    kCycles,
    kCharger,
    kProximity,
    kHingeAngle,
    kTemperature,
    kSeverity,
    kVoltage,
    kCurrent,
    kPercentage,
    kService
  };
  struct Point {
    double at;     // seconds since the beginning
    double value;  // valid until the next point; NaN: unknown
  };
  struct Moment {
    double at;
    std::string lane;  // "health service", "battery client"
    enum class Kind { kDied, kRefused, kRegistered, kCalled, kOther } kind;
    std::string text;
  };

  std::optional<WallTime> began;
  double end = 0;
  // By quantity and name. The name is that of the charger or service, TYPE:NAME for temperatures,
  // and otherwise empty. The first value of a curve is known.
  std::map<std::pair<Quantity, std::string>, std::vector<Point>> curves;
  std::vector<Moment> moments;
};

Timeline MakeTimeline(const Recording& recording);

// "temperature, °C".
std::string TextOf(Timeline::Quantity quantity);
// The family whose service reports the quantity.
std::string_view FamilyOfQuantity(Timeline::Quantity quantity);

}  // namespace norvik::qel::monitor
