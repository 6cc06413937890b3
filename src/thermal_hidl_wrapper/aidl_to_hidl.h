// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Records of the AIDL thermal service in their HIDL 2.0 form. Names are borrowed, not copied: a
// result and whatever it is moved to are valid as long as the argument. Copies of it are not bound.
#pragma once

#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>
#include <android/hardware/thermal/2.0/types.h>

namespace aidl::android::hardware::thermal {

// A type that HIDL 2.0 does not know becomes UNKNOWN.
::android::hardware::thermal::V2_0::Temperature ToHidl(const Temperature& temperature);

// As above. AIDL has no threshold for virtual reality: it becomes NaN.
::android::hardware::thermal::V2_0::TemperatureThreshold ToHidl(
    const TemperatureThreshold& threshold);

// A type that HIDL 2.0 does not know becomes COMPONENT.
::android::hardware::thermal::V2_0::CoolingDevice ToHidl(const CoolingDevice& device);

}  // namespace aidl::android::hardware::thermal
