// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal_history.h"

#include <aidl/android/hardware/thermal/ThrottlingSeverity.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace norvik::qel::linux_machine {

namespace {

using aidl::android::hardware::thermal::ThrottlingSeverity;

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

// The severity of a zone that has crossed a trip point. README.md says why, in "Severities".
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

// Updates `crossed`, the numbers of the trip points that the zone had crossed at its last reading.
// A trip point is crossed at its temperature. It stays crossed until the zone is below that
// temperature by more than the hysteresis. Without a temperature, nothing changes.
void UpdateCrossed(const ThermalZone& zone, std::set<int>* crossed) {
  std::set<int> now;
  for (const TripPoint& trip : zone.trips) {
    const bool was_crossed = crossed->contains(trip.number);
    const int32_t end = trip.millidegrees - (was_crossed ? trip.hysteresis_millidegrees : 0);
    if (zone.millidegrees ? *zone.millidegrees >= end : was_crossed) now.insert(trip.number);
  }
  *crossed = std::move(now);
}

// The worst severity of the crossed trip points. NONE for a zone that is disabled.
ThrottlingSeverity SeverityOf(const ThermalZone& zone, const std::set<int>& crossed) {
  auto worst = ThrottlingSeverity::NONE;
  if (!zone.acts) return worst;
  for (const TripPoint& trip : zone.trips) {
    if (crossed.contains(trip.number)) worst = std::max(worst, SeverityOf(trip, zone));
  }
  return worst;
}

// The temperature, in degrees, at which each severity starts. NaN if no trip point has the
// severity.
std::vector<float> HotThresholds(const ThermalZone& zone) {
  std::vector<float> thresholds(static_cast<size_t>(ThrottlingSeverity::SHUTDOWN) + 1, kNone);
  if (!zone.acts) return thresholds;
  for (const TripPoint& trip : zone.trips) {
    float& threshold = thresholds.at(static_cast<size_t>(SeverityOf(trip, zone)));
    // Of a number and a NaN, fmin() returns the number.
    threshold = std::fmin(threshold, static_cast<float>(trip.millidegrees) / 1000);
  }
  return thresholds;
}

}  // namespace

services::ThermalData ThermalHistory::Continue(const ThermalReading& reading) {
  Meet(reading.zones, &zones_);
  Meet(reading.cooling_devices, &cooling_devices_);
  sources_.clear();
  services::ThermalData data;
  for (const ThermalZone& zone : reading.zones) AddZone(zone, &data);
  for (const CoolingState& device : reading.cooling_devices) {
    data.cooling_devices.push_back({.type = types_.TypeOfCoolingDevice(device.type),
                                    .name = cooling_devices_.at(device.key).name,
                                    .value = device.state});
  }
  return data;
}

template <typename Device>
void ThermalHistory::Meet(const std::vector<Device>& devices, AllKnown* known) {
  AllKnown there;
  std::set<std::string> taken;
  for (const Device& device : devices) {
    const auto found = known->find(device.key);
    // With a different type it is a new device that has reused the number.
    if (found == known->end() || found->second.type != device.type) continue;
    taken.insert(found->second.name);
    there.insert(*found);
  }
  for (const Device& device : devices) {
    if (there.contains(device.key)) continue;
    const bool is_first = taken.insert(device.type).second;
    std::string name = is_first ? device.type : device.type + "@" + device.device;
    there.insert({device.key, {.type = device.type, .name = std::move(name)}});
  }
  known->swap(there);
}

void ThermalHistory::AddZone(const ThermalZone& zone, services::ThermalData* data) {
  Known& known = zones_.at(zone.key);
  UpdateCrossed(zone, &known.crossed);
  known.has_been_read = known.has_been_read || zone.millidegrees.has_value();
  const auto type = types_.TypeOfZone(zone.type);
  const float degrees = zone.millidegrees ? static_cast<float>(*zone.millidegrees) / 1000 : kNone;
  sources_.push_back({.name = known.name,
                      .device = zone.device,
                      .type = type,
                      .is_readable = zone.millidegrees.has_value(),
                      .degrees_celsius = degrees});
  // The interface has no severity for "unknown", and NONE would be wrong.
  if (!known.has_been_read) return;
  data->temperatures.push_back({.type = type,
                                .name = known.name,
                                .value = degrees,
                                .throttlingStatus = SeverityOf(zone, known.crossed)});
  std::vector<float> hot = HotThresholds(zone);
  // The kernel has no trip points for cold.
  std::vector<float> cold(hot.size(), kNone);
  data->thresholds.push_back({.type = type,
                              .name = known.name,
                              .hotThrottlingThresholds = std::move(hot),
                              .coldThrottlingThresholds = std::move(cold)});
}

}  // namespace norvik::qel::linux_machine
