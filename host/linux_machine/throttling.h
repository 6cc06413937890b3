// What a zone's trip points say in terms of throttling.
#pragma once

#include <aidl/android/hardware/thermal/ThrottlingSeverity.h>

#include <set>
#include <vector>

#include "thermal_devices.h"

namespace norvik::qel::linux_machine {

// The severity of a zone that has crossed a trip point:
//   active    LIGHT     a fan or the like runs: nobody's use suffers
//   passive   MODERATE  what makes the heat is slowed down; a second and any hotter one that the
//                       zone has is SEVERE, as what the first brought was not enough
//   hot       CRITICAL  slowing down has not been enough; the kernel can do no more but warn
//   critical  SHUTDOWN  the kernel switches the machine off
// The kernel knows nothing between the last two that would be EMERGENCY. Of a limit of a hwmon
// sensor, on which the kernel does not act:
//   max        MODERATE   hotter than the maker of the chip means it to be
//   crit       CRITICAL   the chip may fail or slow itself down
//   emergency  EMERGENCY  the limit above that which some chips have
aidl::android::hardware::thermal::ThrottlingSeverity SeverityOf(const TripPoint& trip,
                                                                const ThermalZone& zone);

// Brings `crossed`, the numbers of the trip points that the zone had crossed at its last reading,
// up to date. One is crossed at its temperature, and left below it by the hysteresis: in between it
// is as it was. Without a temperature all are as they were.
void UpdateCrossed(const ThermalZone& zone, std::set<int>* crossed);

// The worst of the trip points that have been crossed. NONE for a zone that the kernel does not act
// on.
aidl::android::hardware::thermal::ThrottlingSeverity SeverityOf(const ThermalZone& zone,
                                                                const std::set<int>& crossed);

// Per severity, in degrees, where it begins; NaN where no trip point stands for it.
std::vector<float> HotThresholds(const ThermalZone& zone);

}  // namespace norvik::qel::linux_machine
