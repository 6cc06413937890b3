// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// An AIDL thermal service as a device maker would write it. The caller provides the data.
#pragma once

#include <aidl/android/hardware/thermal/BnThermal.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "quorvel/services/callback_list.h"
#include "quorvel/services/service_event.h"
#include "quorvel/services/thermal_data.h"

namespace norvik::qel::services {

enum class ThermalOperation {
  kGetCoolingDevices,
  kGetCoolingDevicesWithType,
  kGetTemperatures,
  kGetTemperaturesWithType,
  kGetTemperatureThresholds,
  kGetTemperatureThresholdsWithType,
  kRegisterThermalChangedCallback,
  kRegisterThermalChangedCallbackWithType,
  kUnregisterThermalChangedCallback,
  kRegisterCoolingDeviceChangedCallbackWithType,
  kUnregisterCoolingDeviceChangedCallback,
  kCount,
};

std::string_view ThermalOperationName(ThermalOperation operation);

inline constexpr char kThermalInstance[] = "android.hardware.thermal.IThermal/default";

// Callbacks are notified of changed severities and of changed cooling devices, not at registration.
// Callbacks are compared by binder identity. Each can be registered only once.
//
// Threads, locks: see ThermalReporter.
class ThermalService : public aidl::android::hardware::thermal::BnThermal, public ThermalReporter {
 public:
  using Temperature = aidl::android::hardware::thermal::Temperature;
  using TemperatureThreshold = aidl::android::hardware::thermal::TemperatureThreshold;
  using TemperatureType = aidl::android::hardware::thermal::TemperatureType;
  using CoolingDevice = aidl::android::hardware::thermal::CoolingDevice;
  using CoolingType = aidl::android::hardware::thermal::CoolingType;
  using Callback = std::shared_ptr<aidl::android::hardware::thermal::IThermalChangedCallback>;
  using CoolingCallback =
      std::shared_ptr<aidl::android::hardware::thermal::ICoolingDeviceChangedCallback>;

  explicit ThermalService(ThermalData data, ServiceObserver observer = nullptr)
      : ThermalReporter("thermal", std::move(data), std::move(observer)) {}

  // The numbers of callbacks for temperatures and for cooling devices.
  size_t callback_count() const { return callbacks_.size(); }
  size_t cooling_callback_count() const { return cooling_callbacks_.size(); }

  ndk::ScopedAStatus getCoolingDevices(std::vector<CoolingDevice>* out) override;
  ndk::ScopedAStatus getCoolingDevicesWithType(CoolingType type,
                                               std::vector<CoolingDevice>* out) override;
  ndk::ScopedAStatus getTemperatures(std::vector<Temperature>* out) override;
  ndk::ScopedAStatus getTemperaturesWithType(TemperatureType type,
                                             std::vector<Temperature>* out) override;
  ndk::ScopedAStatus getTemperatureThresholds(std::vector<TemperatureThreshold>* out) override;
  ndk::ScopedAStatus getTemperatureThresholdsWithType(
      TemperatureType type, std::vector<TemperatureThreshold>* out) override;
  ndk::ScopedAStatus registerThermalChangedCallback(const Callback& callback) override;
  ndk::ScopedAStatus registerThermalChangedCallbackWithType(const Callback& callback,
                                                            TemperatureType type) override;
  ndk::ScopedAStatus unregisterThermalChangedCallback(const Callback& callback) override;
  ndk::ScopedAStatus registerCoolingDeviceChangedCallbackWithType(const CoolingCallback& callback,
                                                                  CoolingType type) override;
  ndk::ScopedAStatus unregisterCoolingDeviceChangedCallback(
      const CoolingCallback& callback) override;
  binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;

 protected:
  // Called at the start of every call. A status that is not ok becomes the result of the call. May
  // block.
  virtual ndk::ScopedAStatus Permit(ThermalOperation operation);

 private:
  // Calls Permit() and reports a refusal to the observer.
  ndk::ScopedAStatus Ask(ThermalOperation operation);
  template <typename Record, typename Filter>
  ndk::ScopedAStatus Answer(ThermalOperation operation, std::vector<Record> ThermalData::*records,
                            Filter filter, std::vector<Record>* out);
  // `change` returns the reason of a refusal, or null if it succeeds.
  template <typename Change>
  ndk::ScopedAStatus Perform(ThermalOperation operation, ServiceEvent::Kind kind, Change change);
  void Send(const Temperature& temperature) override;
  void Send(const CoolingDevice& device) override;

  CallbackList<Callback, TemperatureType> callbacks_;
  CallbackList<CoolingCallback, CoolingType> cooling_callbacks_;
};

}  // namespace norvik::qel::services
