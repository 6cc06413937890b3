// The thermal service's account of the machine, from one reading to the next.
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

// Remembers, of devices for as long as they are there, the names they go by and the trip points
// they have crossed.
//
// A device goes by its `type`. Where that is taken already, as by the first of several processors,
// its own name is added: "Processor@cooling_device1".
//
// Threads: one at a time.
class ThermalHistory {
 public:
  explicit ThermalHistory(ThermalTypes types) : types_(std::move(types)) {}

  // A temperature that has never been read is not in the result.
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

  // Forgets all devices but these and gives the new ones their names.
  template <typename Device>
  static void Meet(const std::vector<Device>& devices, AllKnown* known);
  void AddZone(const ThermalZone& zone, services::ThermalData* data);

  const ThermalTypes types_;
  AllKnown zones_;
  AllKnown cooling_devices_;
  std::vector<TemperatureSource> sources_;
};

}  // namespace norvik::qel::linux_machine
