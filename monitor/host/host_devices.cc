// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "host/host.h"

namespace norvik::qel::monitor {

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "simulated",
       .description = "a phone inside this program that follows a script",
       .tells_demo = true,
       .make = MakeSimulatedDevice},
      {.name = "linux",
       .description = "this machine: power supplies, temperatures, IIO sensors",
       .tells_demo = false,
       .make = MakeLinuxDevice},
  };
  return kTypes;
}

}  // namespace norvik::qel::monitor
