// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the thermal service, version 1.0.
#pragma once

#include <android/hardware/thermal/1.0/types.h>
#include <android/hidl/base/1.0/IBase.h>

#include <functional>

namespace android::hardware::thermal::V1_0 {

struct BpHwThermal;

struct IThermal
    : public details::Generated<IThermal, ::android::hidl::base::V1_0::IBase, BpHwThermal> {
  static inline const char* descriptor = "android.hardware.thermal@1.0::IThermal";

  using getTemperatures_cb = std::function<void(const V1_0::ThermalStatus& status,
                                                const hidl_vec<V1_0::Temperature>& temperatures)>;
  using getCpuUsages_cb = std::function<void(const V1_0::ThermalStatus& status,
                                             const hidl_vec<V1_0::CpuUsage>& cpuUsages)>;
  using getCoolingDevices_cb = std::function<void(const V1_0::ThermalStatus& status,
                                                  const hidl_vec<V1_0::CoolingDevice>& devices)>;

  // The callback receives the results before the call returns. FAILURE has a message.
  virtual Return<void> getTemperatures(getTemperatures_cb _hidl_cb) = 0;
  virtual Return<void> getCpuUsages(getCpuUsages_cb _hidl_cb) = 0;
  virtual Return<void> getCoolingDevices(getCoolingDevices_cb _hidl_cb) = 0;
};

}  // namespace android::hardware::thermal::V1_0
