// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_manager.h>
#include <utils/StrongPointer.h>

#include "quorvel/services/thermal_service.h"
#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

namespace norvik::qel::bench {

// The simulated phone's running thermal service, in the form that the library's classes take.
inline android::sp<aidl::android::hardware::thermal::ThermalHidlWrapper> LookUpThermal() {
  using aidl::android::hardware::thermal::IThermal;
  using aidl::android::hardware::thermal::ThermalHidlWrapper;
  return android::sp<ThermalHidlWrapper>::make(IThermal::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance))));
}

}  // namespace norvik::qel::bench
