// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "throttling.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace norvik::qel::linux_machine {

using aidl::android::hardware::thermal::ThrottlingSeverity;

ThrottlingSeverity SeverityOf(const TripPoint& trip, const ThermalZone& zone) {
  switch (trip.type) {
    case TripType::kActive:
      return ThrottlingSeverity::LIGHT;
    case TripType::kPassive: {
      const bool is_first =
          std::none_of(zone.trips.begin(), zone.trips.end(), [&](const TripPoint& other) {
            return other.type == TripType::kPassive && other.millidegrees < trip.millidegrees;
          });
      return is_first ? ThrottlingSeverity::MODERATE : ThrottlingSeverity::SEVERE;
    }
    case TripType::kHot:
      return ThrottlingSeverity::CRITICAL;
    case TripType::kMax:
      return ThrottlingSeverity::MODERATE;
    case TripType::kHwmonCritical:
      return ThrottlingSeverity::CRITICAL;
    case TripType::kEmergency:
      return ThrottlingSeverity::EMERGENCY;
    case TripType::kCritical:
      break;
  }
  return ThrottlingSeverity::SHUTDOWN;
}

void UpdateCrossed(const ThermalZone& zone, std::set<int>* crossed) {
  std::set<int> now;
  for (const TripPoint& trip : zone.trips) {
    const bool was_crossed = crossed->contains(trip.number);
    const int32_t end = trip.millidegrees - (was_crossed ? trip.hysteresis_millidegrees : 0);
    if (zone.millidegrees ? *zone.millidegrees >= end : was_crossed) now.insert(trip.number);
  }
  *crossed = std::move(now);
}

ThrottlingSeverity SeverityOf(const ThermalZone& zone, const std::set<int>& crossed) {
  auto worst = ThrottlingSeverity::NONE;
  if (!zone.acts) return worst;
  for (const TripPoint& trip : zone.trips) {
    if (crossed.contains(trip.number)) worst = std::max(worst, SeverityOf(trip, zone));
  }
  return worst;
}

std::vector<float> HotThresholds(const ThermalZone& zone) {
  std::vector<float> thresholds(static_cast<size_t>(ThrottlingSeverity::SHUTDOWN) + 1,
                                std::numeric_limits<float>::quiet_NaN());
  if (!zone.acts) return thresholds;
  for (const TripPoint& trip : zone.trips) {
    float& threshold = thresholds.at(static_cast<size_t>(SeverityOf(trip, zone)));
    // Of a number and a NaN, fmin() returns the number.
    threshold = std::fmin(threshold, static_cast<float>(trip.millidegrees) / 1000);
  }
  return thresholds;
}

}  // namespace norvik::qel::linux_machine
