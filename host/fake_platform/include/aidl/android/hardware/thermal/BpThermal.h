// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the remote side of IThermal.
#pragma once

#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace aidl::android::hardware::thermal {

class BpThermal : public ndk::BpCInterface<IThermal> {
 public:
  explicit BpThermal(const ndk::SpAIBinder& binder);
  ~BpThermal() override;
  ndk::ScopedAStatus getCoolingDevices(std::vector<CoolingDevice>* out) override;
  ndk::ScopedAStatus getCoolingDevicesWithType(CoolingType type,
                                               std::vector<CoolingDevice>* out) override;
  ndk::ScopedAStatus getTemperatures(std::vector<Temperature>* out) override;
  ndk::ScopedAStatus getTemperaturesWithType(TemperatureType type,
                                             std::vector<Temperature>* out) override;
  ndk::ScopedAStatus getTemperatureThresholds(std::vector<TemperatureThreshold>* out) override;
  ndk::ScopedAStatus getTemperatureThresholdsWithType(
      TemperatureType type, std::vector<TemperatureThreshold>* out) override;
  ndk::ScopedAStatus registerThermalChangedCallback(
      const std::shared_ptr<IThermalChangedCallback>& callback) override;
  ndk::ScopedAStatus registerThermalChangedCallbackWithType(
      const std::shared_ptr<IThermalChangedCallback>& callback, TemperatureType type) override;
  ndk::ScopedAStatus unregisterThermalChangedCallback(
      const std::shared_ptr<IThermalChangedCallback>& callback) override;
  ndk::ScopedAStatus registerCoolingDeviceChangedCallbackWithType(
      const std::shared_ptr<ICoolingDeviceChangedCallback>& callback, CoolingType type) override;
  ndk::ScopedAStatus unregisterCoolingDeviceChangedCallback(
      const std::shared_ptr<ICoolingDeviceChangedCallback>& callback) override;
  ndk::ScopedAStatus getInterfaceVersion(int32_t* out) override;
  ndk::ScopedAStatus getInterfaceHash(std::string* out) override;

 private:
  struct Asked;
  const std::unique_ptr<Asked> asked_;
};

}  // namespace aidl::android::hardware::thermal
