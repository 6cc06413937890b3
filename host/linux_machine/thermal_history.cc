// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal_history.h"

#include <algorithm>
#include <limits>

#include "device_files.h"
#include "throttling.h"

namespace norvik::qel::linux_machine {

namespace {

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

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
