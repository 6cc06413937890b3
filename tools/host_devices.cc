#include "tools/host.h"

namespace norvik::qel::tool {

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "simulated",
       .description = "a phone inside this program, with a life of its own",
       .has_sensor_service = true,
       .has_thermal_service = true,
       .make = MakeSimulatedDevice},
      {.name = "linux",
       .description = "the power supplies of this machine",
       .has_sensor_service = false,
       .has_thermal_service = false,
       .make = MakeLinuxDevice},
  };
  return kTypes;
}

}  // namespace norvik::qel::tool
