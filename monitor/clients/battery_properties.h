// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The battery family of the library, as a table.
#pragma once

#include <array>

#include "clients/value.h"
#include "quorvel.h"

namespace norvik::qel::monitor {

struct BatteryProperty : Property {
  bool is_charger;
  int (*get)(void* handle, bool use_cached);
  int (*register_callback)(void* handle, BatteryInfoCallback callback, void* cookie);
  int (*deregister_callback)(void* handle, BatteryInfoCallback callback);
};

extern const BatteryProperty kBatteryLevel;
extern const BatteryProperty kBatteryCycleCount;
extern const BatteryProperty kWirelessCharger;
extern const BatteryProperty kDockCharger;

inline constexpr std::array kBatteryProperties = {&kBatteryLevel, &kBatteryCycleCount,
                                                  &kWirelessCharger, &kDockCharger};

// What a number of the C interface means.
Value Interpret(const BatteryProperty& property, int number);

}  // namespace norvik::qel::monitor
