// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Platform helpers for benchmarks: they observe and end the library's waits at the looper.
#pragma once

#include <android/sensor.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <vector>

#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

namespace norvik::qel::bench {

// The time at which the last poll of the process returned.
int64_t LastPollReturnNs();

// The number of polls started so far. A thread that starts its next poll has finished the events of
// the last one.
int64_t PollsBegun();

// Consumes a wake that an earlier user may have left.
void DrainLooper();

// One reading, as the platform delivers it.
std::vector<ASensorEvent> Reading(int32_t type, float value);

// Looks up the simulated phone's running thermal service and wraps it for the library's classes.
android::sp<aidl::android::hardware::thermal::ThermalHidlWrapper> LookUpThermal();

}  // namespace norvik::qel::bench
