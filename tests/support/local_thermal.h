// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// An AIDL thermal service in the same process, for what a proxy cannot show.
#pragma once

#include <aidl/android/hardware/thermal/BnThermal.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace norvik::qel {

// Every query fills in two records, every registration notifies before it returns; then comes the
// status.
class LocalThermal : public aidl::android::hardware::thermal::BnThermal {
 public:
  using CoolingDevice = aidl::android::hardware::thermal::CoolingDevice;
  using CoolingType = aidl::android::hardware::thermal::CoolingType;
  using Temperature = aidl::android::hardware::thermal::Temperature;
  using TemperatureThreshold = aidl::android::hardware::thermal::TemperatureThreshold;
  using TemperatureType = aidl::android::hardware::thermal::TemperatureType;
  using Callback = std::shared_ptr<aidl::android::hardware::thermal::IThermalChangedCallback>;
  using CoolingCallback =
      std::shared_ptr<aidl::android::hardware::thermal::ICoolingDeviceChangedCallback>;
  using Status = ndk::ScopedAStatus;

  std::function<Status()> status = [] { return Status::ok(); };
  // What the callback answered to the notification.
  bool notification_was_ok = false;
  int dumps = 0;
  // As the last dump was given them.
  int dump_descriptor = -1;
  std::vector<const char*> dump_arguments = {};

  Status getCoolingDevices(std::vector<CoolingDevice>* out) override { return Fill(out); }
  Status getCoolingDevicesWithType(CoolingType, std::vector<CoolingDevice>* out) override {
    return Fill(out);
  }
  Status getTemperatures(std::vector<Temperature>* out) override { return Fill(out); }
  Status getTemperaturesWithType(TemperatureType, std::vector<Temperature>* out) override {
    return Fill(out);
  }
  Status getTemperatureThresholds(std::vector<TemperatureThreshold>* out) override {
    return Fill(out);
  }
  Status getTemperatureThresholdsWithType(TemperatureType,
                                          std::vector<TemperatureThreshold>* out) override {
    return Fill(out);
  }
  Status registerThermalChangedCallback(const Callback& callback) override {
    notification_was_ok = callback->notifyThrottling({.name = "early"}).isOk();
    return status();
  }
  Status registerThermalChangedCallbackWithType(const Callback& callback,
                                                TemperatureType) override {
    return registerThermalChangedCallback(callback);
  }
  Status unregisterThermalChangedCallback(const Callback&) override { return status(); }
  Status registerCoolingDeviceChangedCallbackWithType(const CoolingCallback&,
                                                      CoolingType) override {
    return status();
  }
  Status unregisterCoolingDeviceChangedCallback(const CoolingCallback&) override {
    return status();
  }
  binder_status_t dump(int fd, const char** args, uint32_t count) override {
    ++dumps;
    dump_descriptor = fd;
    dump_arguments.assign(args, args + count);
    return STATUS_UNKNOWN_ERROR;  // nobody looks at it
  }

 private:
  template <typename Record>
  Status Fill(std::vector<Record>* out) {
    out->resize(2);
    return status();
  }
};

}  // namespace norvik::qel
