// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/families.h"

#include "cli/commands.h"
#include "clients/event.h"

namespace norvik::qel::monitor {

std::span<const Family> WatchedFamilies() {
  static constexpr Family kFamilies[] = {
      {.name = "battery", .service = kHealthService, .operand = "", .run = WatchBattery},
      {.name = "sensors", .service = kSensorService, .operand = "", .run = WatchSensors},
      {.name = "thermal",
       .service = kThermalService,
       .operand = "TYPE:NAME such as SKIN:skin",
       .run = WatchThermal},
  };
  return kFamilies;
}

std::span<const Family> AskedFamilies() {
  static constexpr Family kFamilies[] = {
      {.name = "battery", .service = kHealthService, .operand = "", .run = GetBattery},
      {.name = "sensors", .service = kSensorService, .operand = "", .run = GetSensors},
      {.name = "temperatures",
       .service = kThermalService,
       .operand = "NAME such as skin",
       .run = GetTemperatures},
      {.name = "bcl", .service = kThermalService, .operand = "", .run = GetChargeLimits},
  };
  return kFamilies;
}

}  // namespace norvik::qel::monitor
