#include "tools/host.h"

namespace norvik::qel::tool {

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "simulated",
       .description = "a phone inside this program, with a life of its own",
       .make = MakeSimulatedDevice},
      {.name = "linux",
       .description = "the power supplies of this machine",
       .make = MakeLinuxDevice},
  };
  return kTypes;
}

}  // namespace norvik::qel::tool
