// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thermal family of the library, as tables.
#pragma once

#include <array>
#include <string_view>

#include "clients/value.h"
#include "quorvel.h"

namespace norvik::qel::monitor {

// The throttling severity of a temperature.
struct ThermalProperty : Property {
  const char* type_name;
  const char* temperature_name;
};

// The types of temperatures that the library knows. tests/monitor/usage_test.py compares them with
// quorvel.h.
inline constexpr auto kThermalTypes =
    std::to_array<std::string_view>({"CPU", "GPU", "BATTERY", "SKIN", "USB_PORT", "POWER_AMPLIFIER",
                                     "BCL_VOLTAGE", "BCL_CURRENT", "BCL_PERCENTAGE", "NPU"});

// A zone that is of none of these. A registration with this type works, too.
inline constexpr std::string_view kUnknownThermalType = "UNKNOWN";

// What every device with a ThermalDriver has.
extern const ThermalProperty kSkin;
extern const ThermalProperty kAudioCurrent;

inline constexpr std::array kThermalProperties = {&kSkin, &kAudioCurrent};

// The severities of the battery's limits.
struct ChargeLimitProperty : Property {
  int (*get)(void* handle, int* values, int* size, bool use_cached);
};

extern const ChargeLimitProperty kCurrentLimits;
extern const ChargeLimitProperty kVoltageLimits;

inline constexpr std::array kChargeLimitProperties = {&kCurrentLimits, &kVoltageLimits};

inline constexpr std::string_view kCelsius = " degrees C";

}  // namespace norvik::qel::monitor
