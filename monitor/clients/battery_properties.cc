// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/battery_properties.h"

namespace norvik::qel::monitor {

constexpr BatteryProperty kBatteryLevel = {
    {.key = "battery_level", .name = "battery level", .unit = " %"},
    /*is_charger=*/false,
    GetBatteryLevel,
    RegisterBatteryLevelCallback,
    DeregisterBatteryLevelCallback};

constexpr BatteryProperty kBatteryCycleCount = {
    {.key = "battery_cycle_count", .name = "battery cycle count", .unit = ""},
    /*is_charger=*/false,
    GetBatteryCycleCount,
    RegisterBatteryCycleCountCallback,
    DeregisterBatteryCycleCountCallback};

constexpr BatteryProperty kWirelessCharger = {
    {.key = "wireless_charger", .name = "wireless charger", .unit = ""},
    /*is_charger=*/true,
    GetWirelessChargerIsOnline,
    RegisterWirelessChargerIsOnlineCallback,
    DeregisterWirelessChargerIsOnlineCallback};

constexpr BatteryProperty kDockCharger = {
    {.key = "dock_charger", .name = "dock charger", .unit = ""},
    /*is_charger=*/true,
    GetDockChargerIsOnline,
    RegisterDockChargerIsOnlineCallback,
    DeregisterDockChargerIsOnlineCallback};

Value Interpret(const BatteryProperty& property, int number) {
  if (number == QUORVEL_BATTERY_UNKNOWN) return {};
  if (property.is_charger) return number == QUORVEL_CHARGER_ONLINE;
  return number;
}

}  // namespace norvik::qel::monitor
