// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The state that the thermal service keeps between readings.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/linux_machine/thermal.h"
#include "quorvel/services/thermal_data.h"
#include "thermal_devices.h"
#include "thermal_types.h"

namespace norvik::qel::linux_machine {

// Keeps the reported name and the crossed trip points of each device, for as long as it exists.
//
// A device is reported under its `type`. If another device already has that name, as with several
// processors, the device's own name is added: "Processor@cooling_device1".
//
// Threads: one at a time.
class ThermalHistory {
 public:
  explicit ThermalHistory(ThermalTypes types) : types_(std::move(types)) {}

  // Updates the state with a reading and returns the data to report. A temperature that has never
  // been read successfully is left out.
  services::ThermalData Continue(const ThermalReading& reading);
  // All temperatures of the last reading.
  const std::vector<TemperatureSource>& sources() const { return sources_; }

 private:
  struct Known {
    std::string type;
    std::string name;
    std::set<int> crossed = {};
    bool has_been_read = false;
  };
  // By key.
  using AllKnown = std::map<std::string, Known>;

  // Drops the state of all other devices and names the new ones.
  template <typename Device>
  static void Meet(const std::vector<Device>& devices, AllKnown* known);
  void AddZone(const ThermalZone& zone, services::ThermalData* data);

  const ThermalTypes types_;
  AllKnown zones_;
  AllKnown cooling_devices_;
  std::vector<TemperatureSource> sources_;
};

}  // namespace norvik::qel::linux_machine
