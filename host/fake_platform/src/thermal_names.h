// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The names of the thermal enums. AIDL and both versions of HIDL share the names; HIDL has only the
// first few of each list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace norvik::qel::fake {

// In the order of the values. Temperature types start at -1, the others at 0.
inline constexpr const char* kTemperatureTypeNames[] = {
    "UNKNOWN",         "CPU",         "GPU",         "BATTERY",        "SKIN",   "USB_PORT",
    "POWER_AMPLIFIER", "BCL_VOLTAGE", "BCL_CURRENT", "BCL_PERCENTAGE", "NPU",    "TPU",
    "DISPLAY",         "MODEM",       "SOC",         "WIFI",           "CAMERA", "FLASHLIGHT",
    "SPEAKER",         "AMBIENT",     "POGO"};
inline constexpr const char* kThrottlingSeverityNames[] = {
    "NONE", "LIGHT", "MODERATE", "SEVERE", "CRITICAL", "EMERGENCY", "SHUTDOWN"};
inline constexpr const char* kCoolingTypeNames[] = {
    "FAN",     "BATTERY",         "CPU",     "GPU",     "MODEM", "NPU",    "COMPONENT",
    "TPU",     "POWER_AMPLIFIER", "DISPLAY", "SPEAKER", "WIFI",  "CAMERA", "FLASHLIGHT",
    "USB_PORT"};

// The name of a value between `first` and `last`. Null for any other value.
template <typename Enum>
const char* NameOf(std::span<const char* const> names, Enum value, Enum first, Enum last) {
  const int64_t number = static_cast<int64_t>(value);
  if (number < static_cast<int64_t>(first) || number > static_cast<int64_t>(last)) return nullptr;
  return names[static_cast<size_t>(number - static_cast<int64_t>(first))];
}

}  // namespace norvik::qel::fake
