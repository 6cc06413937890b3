// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Throttling severities from a zone's trip points.
#pragma once

#include <aidl/android/hardware/thermal/ThrottlingSeverity.h>

#include <set>
#include <vector>

#include "thermal_devices.h"

namespace norvik::qel::linux_machine {

// The severity of a zone that has crossed a trip point:
//   active    LIGHT     the kernel starts a fan or the like; performance is not reduced
//   passive   MODERATE  the kernel slows down the heat source
//             SEVERE    a further, hotter passive trip point: the first was not enough
//   hot       CRITICAL  slowing down was not enough; the kernel can only warn
//   critical  SHUTDOWN  the kernel switches the machine off
// No trip point means EMERGENCY: the kernel does not shut down parts of the machine.
//
// The severity of a hwmon sensor that has crossed a limit, on which the kernel does not act:
//   max        MODERATE   above the maximum that the maker of the chip recommends
//   crit       CRITICAL   the chip may fail or slow itself down
//   emergency  EMERGENCY  a further limit of some chips, above crit
aidl::android::hardware::thermal::ThrottlingSeverity SeverityOf(const TripPoint& trip,
                                                                const ThermalZone& zone);

// Updates `crossed`, the numbers of the trip points that the zone had crossed at its last reading.
// A trip point is crossed at its temperature. It stays crossed until the zone is below that
// temperature by more than the hysteresis. Without a temperature, nothing changes.
void UpdateCrossed(const ThermalZone& zone, std::set<int>* crossed);

// The worst severity of the crossed trip points. NONE for a zone that is disabled.
aidl::android::hardware::thermal::ThrottlingSeverity SeverityOf(const ThermalZone& zone,
                                                                const std::set<int>& crossed);

// The temperature, in degrees, at which each severity starts. NaN if no trip point has the
// severity.
std::vector<float> HotThresholds(const ThermalZone& zone);

}  // namespace norvik::qel::linux_machine
