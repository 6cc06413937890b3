// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/thermal_properties.h"

namespace norvik::qel::monitor {

constexpr ThermalProperty kSkin = {
    {.key = "SKIN:skin", .name = "SKIN:skin", .unit = ""}, "SKIN", "skin"};

constexpr ThermalProperty kAudioCurrent = {
    {.key = "BCL_CURRENT:AUDIO_current", .name = "BCL_CURRENT:AUDIO_current", .unit = ""},
    "BCL_CURRENT",
    "AUDIO_current"};

constexpr ChargeLimitProperty kCurrentLimits = {
    {.key = "bcl_current", .name = "battery current limits", .unit = ""},
    GetBatteryChargeLimitCurrent};

constexpr ChargeLimitProperty kVoltageLimits = {
    {.key = "bcl_voltage", .name = "battery voltage limits", .unit = ""},
    GetBatteryChargeLimitVoltage};

}  // namespace norvik::qel::monitor
