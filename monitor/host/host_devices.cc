// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "host/host.h"

namespace norvik::qel::monitor {

std::span<const DeviceType> DeviceTypes() {
  static constexpr DeviceType kTypes[] = {
      {.name = "linux",
       .description = "this machine: power supplies, temperatures, IIO sensors",
       .make = MakeLinuxDevice},
      {.name = "simulated",
       .description = "a phone inside this program that follows a script",
       .make = MakeSimulatedDevice},
  };
  return kTypes;
}

}  // namespace norvik::qel::monitor
